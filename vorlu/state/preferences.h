#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/platform/platform.h"
#include "vorlu/state/key_note.h"
#include "vorlu/state/log.h"

namespace vorlu {

using TextList = std::vector<std::string>;

/// Words for a place on the screen, in any letter case: both spellings of the middle, and the pair that the tool's
/// manual names.
inline constexpr Choices promptPositions = {"topleft", "left",        "bottomleft",    "top",    "bottom", "topright",
                                            "right",   "bottomright", "center/centre", "center", "centre"};

/// GeneralOptions. Members hold their default until the profile gives another value; optional ones have none.
struct GeneralOptionPrefs {
  std::optional<std::string> publicKey;
  bool hourlyCheck = true;
  bool updatePrompts = true;
  bool autoUpdate = true;
  std::optional<TextList> allowedAppInstalls;
  std::optional<TextList> excludedAppInstalls;
  std::optional<TextList> allowedAppUpdates;
  std::optional<TextList> excludedAppUpdates;
  template <class P = GeneralOptionPrefs>
  static constexpr auto keys() {
    return std::tuple{
        field<&P::publicKey>("publicKey", {.help = "Public key of the reports' owner: the Base64 of its DER on one "
                                                   "line, as vorlu-server keygen prints it; without it "
                                                   "no report is sent."}),
        field<&P::hourlyCheck>("hourlyCheck", {.help = "Lets --update run look for updates about once an hour and "
                                                       "install those of apps that are not in use."}),
        field<&P::updatePrompts>(
            "updatePrompts",
            {.help = "Lets --update run ask the user about updates of apps in use, by the rules of ScheduledUpdates."}),
        field<&P::autoUpdate>("autoUpdate", {.help = "Lets the agent update itself and its prompts."}),
        field<&P::allowedAppInstalls>("allowedAppInstalls",
                                      {.help = "Apps that --install may install, by appIdentifier or serverName; "
                                               "absent or empty: every app of the catalog."}),
        field<&P::excludedAppInstalls>(
            "excludedAppInstalls",
            {.help = "Apps that --install refuses, by appIdentifier or serverName, even if they are allowed."}),
        field<&P::allowedAppUpdates>("allowedAppUpdates",
                                     {.help = "The only apps to update, by appIdentifier, appName or serverName; "
                                              "absent or empty: every app of the catalog."}),
        field<&P::excludedAppUpdates>(
            "excludedAppUpdates",
            {.help = "Apps that are never updated, by appIdentifier; exclusion beats allowance."})};
  }
  template <class P = GeneralOptionPrefs>
  static constexpr auto fields() {
    return withoutNotes(P::keys());
  }
};

struct DeferralPrefs {
  std::string deferralOption = "specifyDeferralLimit";
  std::int64_t specifyLimit = 2;
  template <class P = DeferralPrefs>
  static constexpr auto keys() {
    return std::tuple{
        field<&P::deferralOption>(
            "deferralOption", {.help = "Whether the user may defer a limited number of times, without limit or not at "
                                       "all; another text updates without asking.",
                               .choices = {"specifyDeferralLimit", "disableDeferralLimit", "disableDeferrals"}}),
        field<&P::specifyLimit>(
            "specifyLimit",
            {.help = "How often the user may defer with specifyDeferralLimit; with none left the grace period starts.",
             .range = KeyRange{0}})};
  }
  template <class P = DeferralPrefs>
  static constexpr auto fields() {
    return withoutNotes(P::keys());
  }
};

inline constexpr Choices promptModes = {"singlePromptMode", "recurringPromptMode"};

struct RunPrefs {
  std::string runType = "specifyfrequency";
  std::int64_t patchDay = 3;
  bool missedUpdatePrompt = true;
  std::string frequencyOption = "oneWeek";
  std::string frequencyElapsedMode = "singlePromptMode";
  std::int64_t deferralWindow = 60;  ///< minutes
  std::string patchDayFrequency = "singlePromptMode";
  std::int64_t patchDayDeferralWindow = 60;  ///< minutes
  template <class P = RunPrefs>
  static constexpr auto keys() {
    return std::tuple{
        field<&P::runType>("runType", {.help = "When users are asked: after an interval since the last update "
                                               "activity, or on one day of the week. Another text: at every run.",
                                       .choices = {"specifyFrequency", "specifyPatchDay"},
                                       .choicesInAnyCase = true}),
        field<&P::patchDay>("patchDay", {.help = "Patch day for specifyPatchDay: 1 is Sunday, 7 is Saturday.",
                                         .range = KeyRange{1, 7}}),
        field<&P::missedUpdatePrompt>(
            "missedUpdatePrompt",
            {.help = "Makes up for a patch day on a later day: with singlePromptMode for one without "
                     "any update or deferral, with recurringPromptMode after a deferral."}),
        field<&P::frequencyOption>("frequencyOption",
                                   {.help = "Interval for specifyFrequency. Another text: no interval.",
                                    .choices = {"oneDay", "oneWeek", "twoWeeks", "threeWeeks", "fourWeeks"},
                                    .choicesInAnyCase = true}),
        field<&P::frequencyElapsedMode>(
            "frequencyElapsedMode",
            {.help =
                 "Asks once an interval, or again after each deferral. Any text but singlePromptMode means recurring.",
             .choices = promptModes}),
        field<&P::deferralWindow>(
            "deferralWindow",
            {.help = "Time after a deferral before recurringPromptMode asks again, with specifyFrequency.",
             .range = KeyRange{0},
             .unit = "minutes"}),
        field<&P::patchDayFrequency>("patchDayFrequency",
                                     {.help = "Asks once on a patch day, or again after each deferral. Any text but "
                                              "singlePromptMode means recurring.",
                                      .choices = promptModes}),
        field<&P::patchDayDeferralWindow>(
            "patchDayDeferralWindow",
            {.help = "Time after a deferral before recurringPromptMode asks again, with specifyPatchDay.",
             .range = KeyRange{0},
             .unit = "minutes"})};
  }
  template <class P = RunPrefs>
  static constexpr auto fields() {
    return withoutNotes(P::keys());
  }
};

/// One day of the run limitations. The times as the profile gives them, such as "09:00".
struct DayLimits {
  bool allowed = true;
  std::optional<std::string> startTime;
  std::optional<std::string> endTime;
};

/// The three keys that each day of the run limitations has.
namespace limitNotes {
inline constexpr std::string_view clock = "^(([01][0-9]|2[0-3]):?[0-5][0-9])?$";
inline constexpr KeyNote day{.help = "Whether updates may run on this day."};
constexpr KeyNote opens(std::string_view end) {
  return {.help = "Time from which updates may run on this day.",
          .unit = "24-hour clock",
          .pattern = clock,
          .example = "09:00",
          .needs = end};
}
constexpr KeyNote closes(std::string_view start) {
  return {
      .help =
          "Time up to which updates may run on this day; one before the start time shuts the hours between the two.",
      .unit = "24-hour clock",
      .pattern = clock,
      .example = "17:00",
      .needs = start};
}
}  // namespace limitNotes

/// The limitations of a week. The keys of a day are its name, "{day}StartTime" and "{day}EndTime".
struct RunLimits {
  bool monday = true, tuesday = true, wednesday = true, thursday = true, friday = true, saturday = true, sunday = true;
  std::optional<std::string> mondayStartTime, mondayEndTime, tuesdayStartTime, tuesdayEndTime, wednesdayStartTime,
      wednesdayEndTime, thursdayStartTime, thursdayEndTime, fridayStartTime, fridayEndTime, saturdayStartTime,
      saturdayEndTime, sundayStartTime, sundayEndTime;

  /// By the calendar's number: 1 Sunday to 7 Saturday.
  DayLimits day(int weekday) const;

  template <class P = RunLimits>
  static constexpr auto keys() {
    return std::tuple{field<&P::monday>("monday", limitNotes::day),
                      field<&P::mondayStartTime>("mondayStartTime", limitNotes::opens("mondayEndTime")),
                      field<&P::mondayEndTime>("mondayEndTime", limitNotes::closes("mondayStartTime")),
                      field<&P::tuesday>("tuesday", limitNotes::day),
                      field<&P::tuesdayStartTime>("tuesdayStartTime", limitNotes::opens("tuesdayEndTime")),
                      field<&P::tuesdayEndTime>("tuesdayEndTime", limitNotes::closes("tuesdayStartTime")),
                      field<&P::wednesday>("wednesday", limitNotes::day),
                      field<&P::wednesdayStartTime>("wednesdayStartTime", limitNotes::opens("wednesdayEndTime")),
                      field<&P::wednesdayEndTime>("wednesdayEndTime", limitNotes::closes("wednesdayStartTime")),
                      field<&P::thursday>("thursday", limitNotes::day),
                      field<&P::thursdayStartTime>("thursdayStartTime", limitNotes::opens("thursdayEndTime")),
                      field<&P::thursdayEndTime>("thursdayEndTime", limitNotes::closes("thursdayStartTime")),
                      field<&P::friday>("friday", limitNotes::day),
                      field<&P::fridayStartTime>("fridayStartTime", limitNotes::opens("fridayEndTime")),
                      field<&P::fridayEndTime>("fridayEndTime", limitNotes::closes("fridayStartTime")),
                      field<&P::saturday>("saturday", limitNotes::day),
                      field<&P::saturdayStartTime>("saturdayStartTime", limitNotes::opens("saturdayEndTime")),
                      field<&P::saturdayEndTime>("saturdayEndTime", limitNotes::closes("saturdayStartTime")),
                      field<&P::sunday>("sunday", limitNotes::day),
                      field<&P::sundayStartTime>("sundayStartTime", limitNotes::opens("sundayEndTime")),
                      field<&P::sundayEndTime>("sundayEndTime", limitNotes::closes("sundayStartTime"))};
  }
  template <class P = RunLimits>
  static constexpr auto fields() {
    return withoutNotes(P::keys());
  }
};

/// InitialSizePrefs, GraceSizePrefs and SelfServiceSizePrefs share one shape.
struct PromptSizePrefs {
  std::optional<std::int64_t> promptHeight;
  std::optional<std::int64_t> promptWidth;
  template <class P = PromptSizePrefs>
  static constexpr auto keys() {
    return std::tuple{
        field<&P::promptHeight>("promptHeight", {.help = "Height of the window without its list.",
                                                 .range = KeyRange{1},
                                                 .unit = "points",
                                                 .needs = "promptWidth"}),
        field<&P::promptWidth>(
            "promptWidth",
            {.help = "Width of the window.", .range = KeyRange{1}, .unit = "points", .needs = "promptHeight"})};
  }
  template <class P = PromptSizePrefs>
  static constexpr auto fields() {
    return withoutNotes(P::keys());
  }
};

/// Keys that both kinds of updates have.
namespace promptNotes {
inline constexpr KeyNote customIcon{
    .help = "Path of the icon of the prompts; absent: Self Service branding or the App Store icon.",
    .example = "/Library/Management/icon.png"};
inline constexpr KeyNote initialPromptOverlayIcon{
    .help = "Path of the small icon over the icon of the prompts, or selfservice for the Self Service branding.",
    .example = "selfservice"};
inline constexpr KeyNote customUpdateButton{.help = "Text of the button that starts the update.", .ifAbsent = "Update"};
inline constexpr KeyNote refreshInterval{.help =
                                             "Time after which the prompt that offers a deferral comes to the front "
                                             "again; others are brought into this range.",
                                         .range = KeyRange{10, 120},
                                         .unit = "seconds"};
inline constexpr KeyNote acceptableAppBundleIDs{.help =
                                                    "Bundle identifiers of apps during whose use nobody is asked: one "
                                                    "in the foreground postpones the prompt.",
                                                .example = "com.apple.iWork.Keynote"};
inline constexpr KeyNote acceptableAppAssertions{
    .help = "Names of processes that postpone the prompt while they keep the Mac from sleeping, as in a call.",
    .example = "zoom.us"};
inline constexpr KeyNote acceptableDNDMode{.help = "Postpones the prompt while Do Not Disturb or a Focus is on."};
inline constexpr KeyNote acceptableCameraUsage{
    .help = "Postpones the prompt while a camera is in use; Apple silicon needs macOS 13."};
inline constexpr KeyNote acceptableScreenSharing{.help = "Postpones the prompt while the screen is shared."};
inline constexpr KeyNote updateProgressPosition{
    .help = "Where the progress window and the prompts after it stand. Another text: topright.",
    .choices = promptPositions,
    .choicesInAnyCase = true,
    .ifAbsent = "topright"};
inline constexpr KeyNote updateProgressPrompt{.help = "Progress window in front of others, among them, or none.",
                                              .choices = {"focusPrompt", "noFocusPrompt", "noPrompt"},
                                              .ifAbsent = "noFocusPrompt"};
inline constexpr KeyNote updateProgressOverlayIcon{.help =
                                                       "Path of the small icon over the app's icon in the progress "
                                                       "window, or selfservice for the Self Service branding.",
                                                   .example = "selfservice"};
inline constexpr KeyNote autoRelaunchApps{.help = "Opens apps again that were quit for their update."};
inline constexpr KeyNote displayCompletePrompt{.help = "Tells the user when the updates are done."};
}  // namespace promptNotes

struct ScheduledUpdatesPrefs {
  DeferralPrefs deferralConfiguration;
  RunPrefs runFrequency;
  RunLimits runLimitations;
  std::optional<PromptSizePrefs> customInitialPromptSize;
  std::optional<PromptSizePrefs> customGracePromptSize;
  std::optional<PromptSizePrefs> customSelfServicePromptSize;
  std::int64_t gracePeriodMinutes = 15;
  std::optional<std::string> customIcon;
  std::optional<std::string> initialPromptOverlayIcon;
  std::string singleAppTitle = "Important App Update Available";
  std::string multipleAppsTitle = "Important App Updates Available";
  std::optional<std::string> singleInitialQuitPromptMessage;
  std::optional<std::string> multipleInitialQuitPromptMessage;
  std::optional<std::string> singleSelfServiceQuitMessage;
  std::optional<std::string> multipleSelfServiceQuitMessage;
  std::optional<std::string> singleAppGracePeriodQuitMessage;
  std::optional<std::string> multipleAppGracePeriodQuitMessage;
  std::optional<std::string> customDeferButton;
  std::optional<std::string> customSkipButton;
  std::optional<std::string> customUpdateButton;
  std::optional<std::string> appListType;
  std::int64_t refreshInterval = 20;  ///< seconds
  std::optional<TextList> acceptableAppBundleIDs;
  std::optional<TextList> acceptableAppAssertions;
  bool acceptableDNDMode = false;
  bool acceptableCameraUsage = false;
  bool acceptableScreenSharing = false;
  std::optional<std::string> updateProgressPosition;
  std::optional<std::string> updateProgressPrompt;
  std::optional<std::string> updateProgressOverlayIcon;
  bool autoRelaunchApps = true;
  bool displayCompletePrompt = true;
  template <class P = ScheduledUpdatesPrefs>
  static constexpr auto keys() {
    return std::tuple{
        field<&P::deferralConfiguration>("deferralConfiguration", {.help = "Deferrals."}),
        field<&P::runFrequency>("runFrequency", {.help = "How often the user is asked."}),
        field<&P::runLimitations>(
            "runLimitations",
            {.help = "Days and times at which the user may be asked. The patch day overrides its day, not its times."}),
        field<&P::customInitialPromptSize>("customInitialPromptSize",
                                           {.help = "Size of the prompt that offers a deferral."}),
        field<&P::customGracePromptSize>("customGracePromptSize", {.help = "Size of the grace period prompt."}),
        field<&P::customSelfServicePromptSize>("customSelfServicePromptSize",
                                               {.help = "Size of the prompt of --update selfService."}),
        field<&P::gracePeriodMinutes>(
            "gracePeriodMinutes",
            {.help = "Countdown of the grace period prompt; 0 or less means 15, a week is the longest.",
             .range = KeyRange{1, 10080},
             .unit = "minutes"}),
        field<&P::customIcon>("customIcon", promptNotes::customIcon),
        field<&P::initialPromptOverlayIcon>("initialPromptOverlayIcon", promptNotes::initialPromptOverlayIcon),
        field<&P::singleAppTitle>("singleAppTitle", {.help = "Title of the prompts for one app; appName is replaced."}),
        field<&P::multipleAppsTitle>("multipleAppsTitle", {.help = "Title of the prompts for several apps."}),
        field<&P::singleInitialQuitPromptMessage>("singleInitialQuitPromptMessage",
                                                  {.help = "Message of the prompt that offers a deferral, for one app; "
                                                           "placeholders are replaced. Absent: the agent's own."}),
        field<&P::multipleInitialQuitPromptMessage>(
            "multipleInitialQuitPromptMessage", {.help = "Message of the prompt that offers a deferral, for several "
                                                         "apps; placeholders are replaced. Absent: the agent's own."}),
        field<&P::singleSelfServiceQuitMessage>("singleSelfServiceQuitMessage",
                                                {.help = "Message of the prompt of --update selfService for one app; "
                                                         "placeholders are replaced. Absent: the agent's own."}),
        field<&P::multipleSelfServiceQuitMessage>(
            "multipleSelfServiceQuitMessage", {.help = "Message of the prompt of --update selfService for several "
                                                       "apps; placeholders are replaced. Absent: the agent's own."}),
        field<&P::singleAppGracePeriodQuitMessage>("singleAppGracePeriodQuitMessage",
                                                   {.help = "Message of the grace period prompt for one app; "
                                                            "placeholders are replaced. Absent: the agent's own."}),
        field<&P::multipleAppGracePeriodQuitMessage>("multipleAppGracePeriodQuitMessage",
                                                     {.help = "Message of the grace period prompt for several apps; "
                                                              "placeholders are replaced. Absent: the agent's own."}),
        field<&P::customDeferButton>("customDeferButton",
                                     {.help = "Text of the defer button; where deferrals are limited deferCount is "
                                              "replaced. Absent: Defer, with the count there.",
                                      .example = "Later (deferCount)"}),
        field<&P::customSkipButton>(
            "customSkipButton",
            {.help = "Text of the button that takes the place of the defer button in --update selfService.",
             .ifAbsent = "Skip"}),
        field<&P::customUpdateButton>("customUpdateButton", promptNotes::customUpdateButton),
        field<&P::appListType>(
            "appListType", {.help = "Shows the apps as a list in the prompt (vertical), or names them in its message.",
                            .choices = {"vertical", "horizontal"},
                            .ifAbsent = "horizontal"}),
        field<&P::refreshInterval>("refreshInterval", promptNotes::refreshInterval),
        field<&P::acceptableAppBundleIDs>("acceptableAppBundleIDs", promptNotes::acceptableAppBundleIDs),
        field<&P::acceptableAppAssertions>("acceptableAppAssertions", promptNotes::acceptableAppAssertions),
        field<&P::acceptableDNDMode>("acceptableDNDMode", promptNotes::acceptableDNDMode),
        field<&P::acceptableCameraUsage>("acceptableCameraUsage", promptNotes::acceptableCameraUsage),
        field<&P::acceptableScreenSharing>("acceptableScreenSharing", promptNotes::acceptableScreenSharing),
        field<&P::updateProgressPosition>("updateProgressPosition", promptNotes::updateProgressPosition),
        field<&P::updateProgressPrompt>("updateProgressPrompt", promptNotes::updateProgressPrompt),
        field<&P::updateProgressOverlayIcon>("updateProgressOverlayIcon", promptNotes::updateProgressOverlayIcon),
        field<&P::autoRelaunchApps>("autoRelaunchApps", promptNotes::autoRelaunchApps),
        field<&P::displayCompletePrompt>("displayCompletePrompt", promptNotes::displayCompletePrompt)};
  }
  template <class P = ScheduledUpdatesPrefs>
  static constexpr auto fields() {
    return withoutNotes(P::keys());
  }
};

struct ForcedUpdatesPrefs {
  RunLimits runLimitations;
  std::optional<PromptSizePrefs> customInitialPromptSize;
  std::optional<PromptSizePrefs> customGracePromptSize;
  std::optional<std::string> customIcon;
  std::optional<std::string> initialPromptOverlayIcon;
  std::optional<std::string> customTitle;
  std::optional<std::string> initialQuitPromptMessage;
  std::optional<std::string> gracePeriodQuitPromptMessage;
  std::optional<std::string> customDeferButton;
  std::optional<std::string> customUpdateButton;
  std::int64_t refreshInterval = 20;  ///< seconds
  std::optional<TextList> acceptableAppBundleIDs;
  std::optional<TextList> acceptableAppAssertions;
  bool acceptableDNDMode = false;
  bool acceptableCameraUsage = false;
  bool acceptableScreenSharing = false;
  std::string updateProgressPosition = "top";
  std::string updateProgressPrompt = "noFocusPrompt";
  std::optional<std::string> updateProgressOverlayIcon;
  bool autoRelaunchApps = true;
  bool displayCompletePrompt = true;
  template <class P = ForcedUpdatesPrefs>
  static constexpr auto keys() {
    return std::tuple{
        field<&P::runLimitations>("runLimitations", {.help = "Days and times at which forced updates may run."}),
        field<&P::customInitialPromptSize>("customInitialPromptSize",
                                           {.help = "Size of the prompt that offers a deferral."}),
        field<&P::customGracePromptSize>("customGracePromptSize", {.help = "Size of the grace period prompt."}),
        field<&P::customIcon>("customIcon", promptNotes::customIcon),
        field<&P::initialPromptOverlayIcon>("initialPromptOverlayIcon", promptNotes::initialPromptOverlayIcon),
        field<&P::customTitle>("customTitle", {.help = "Title of the prompts; appName is replaced.",
                                               .ifAbsent = "Urgent Update Required"}),
        field<&P::initialQuitPromptMessage>(
            "initialQuitPromptMessage",
            {.help =
                 "Message of the prompt that offers a deferral; placeholders are replaced. Absent: the agent's own."}),
        field<&P::gracePeriodQuitPromptMessage>(
            "gracePeriodQuitPromptMessage",
            {.help = "Message of the grace period prompt; placeholders are replaced. Absent: the agent's own."}),
        field<&P::customDeferButton>("customDeferButton", {.help = "Text of the defer button; deferCount is replaced.",
                                                           .ifAbsent = "Defer (deferCount)"}),
        field<&P::customUpdateButton>("customUpdateButton", promptNotes::customUpdateButton),
        field<&P::refreshInterval>("refreshInterval", promptNotes::refreshInterval),
        field<&P::acceptableAppBundleIDs>("acceptableAppBundleIDs", promptNotes::acceptableAppBundleIDs),
        field<&P::acceptableAppAssertions>("acceptableAppAssertions", promptNotes::acceptableAppAssertions),
        field<&P::acceptableDNDMode>("acceptableDNDMode", promptNotes::acceptableDNDMode),
        field<&P::acceptableCameraUsage>("acceptableCameraUsage", promptNotes::acceptableCameraUsage),
        field<&P::acceptableScreenSharing>("acceptableScreenSharing", promptNotes::acceptableScreenSharing),
        field<&P::updateProgressPosition>("updateProgressPosition", promptNotes::updateProgressPosition),
        field<&P::updateProgressPrompt>("updateProgressPrompt", promptNotes::updateProgressPrompt),
        field<&P::updateProgressOverlayIcon>("updateProgressOverlayIcon", promptNotes::updateProgressOverlayIcon),
        field<&P::autoRelaunchApps>("autoRelaunchApps", promptNotes::autoRelaunchApps),
        field<&P::displayCompletePrompt>("displayCompletePrompt", promptNotes::displayCompletePrompt)};
  }
  template <class P = ForcedUpdatesPrefs>
  static constexpr auto fields() {
    return withoutNotes(P::keys());
  }
};

/// The administrator's property list. A missing section behaves as one with every key missing.
struct CustomPrefs {
  GeneralOptionPrefs GeneralOptions;
  ScheduledUpdatesPrefs ScheduledUpdates;
  ForcedUpdatesPrefs ForcedUpdates;
  template <class P = CustomPrefs>
  static constexpr auto keys() {
    return std::tuple{
        field<&P::GeneralOptions>("GeneralOptions", {.help = "What the agent does at all, and for which apps."}),
        field<&P::ScheduledUpdates>("ScheduledUpdates",
                                    {.help = "When and how users are asked about updates of apps in use."}),
        field<&P::ForcedUpdates>(
            "ForcedUpdates",
            {.help = "How updates that an administrator forces run and ask. What postpones a prompt here "
                     "postpones the update, even of an app that is not in use."})};
  }
  template <class P = CustomPrefs>
  static constexpr auto fields() {
    return withoutNotes(P::keys());
  }
};

/// Finds and decodes the list: the first path that exists wins. No file, or one that can't be read, gives the defaults
/// in silence; one that can't be decoded gives the defaults and is logged.
CustomPrefs loadPreferences(Platform& platform, Log& log);

/// The preferences of this run: read at the first question and kept.
class Preferences {
 public:
  Preferences(Platform& platform, Log& log) : platform_(platform), log_(log) {}

  const GeneralOptionPrefs& general() { return loaded().GeneralOptions; }
  const ScheduledUpdatesPrefs& scheduled() { return loaded().ScheduledUpdates; }
  const ForcedUpdatesPrefs& forced() { return loaded().ForcedUpdates; }

 private:
  const CustomPrefs& loaded();

  Platform& platform_;
  Log& log_;
  std::optional<CustomPrefs> prefs_;
};

}  // namespace vorlu
