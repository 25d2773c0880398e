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
  static constexpr auto keys() {
    using P = GeneralOptionPrefs;
    return std::tuple{
        field<&P::publicKey>(
            "publicKey",
            {.help = "Public key of the reports' owner, PEM text or its Base64 body; without it no report is sent."}),
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
  static constexpr auto fields() { return withoutNotes(keys()); }
};

struct DeferralPrefs {
  std::string deferralOption = "specifyDeferralLimit";
  std::int64_t specifyLimit = 2;
  static constexpr auto keys() {
    return std::tuple{
        field<&DeferralPrefs::deferralOption>(
            "deferralOption", {.help = "Whether the user may defer a limited number of times, without limit or not at "
                                       "all; another text updates without asking.",
                               .choices = {"specifyDeferralLimit", "disableDeferralLimit", "disableDeferrals"}}),
        field<&DeferralPrefs::specifyLimit>(
            "specifyLimit",
            {.help = "How often the user may defer with specifyDeferralLimit; with none left the grace period starts.",
             .range = KeyRange{0}})};
  }
  static constexpr auto fields() { return withoutNotes(keys()); }
};

struct RunPrefs {
  std::string runType = "specifyfrequency";
  std::int64_t patchDay = 3;
  bool missedUpdatePrompt = true;
  std::string frequencyOption = "oneWeek";
  std::string frequencyElapsedMode = "singlePromptMode";
  std::int64_t deferralWindow = 60;  ///< minutes
  std::string patchDayFrequency = "singlePromptMode";
  std::int64_t patchDayDeferralWindow = 60;  ///< minutes
  static constexpr auto keys() {
    using P = RunPrefs;
    return std::tuple{
        field<&P::runType>("runType", {.help = "When users are asked: after an interval since the last update "
                                               "activity, or on one day of the week. Another text: at every run.",
                                       .choices = {"specifyFrequency", "specifyPatchDay"},
                                       .choicesInAnyCase = true}),
        field<&P::patchDay>("patchDay", {.help = "Patch day for specifyPatchDay: 1 is Sunday, 7 is Saturday.",
                                         .range = KeyRange{1, 7}}),
        field<&P::missedUpdatePrompt>("missedUpdatePrompt",
                                      {.help = "Asks on a later day when nothing happened on the patch day."}),
        field<&P::frequencyOption>("frequencyOption",
                                   {.help = "Interval for specifyFrequency. Another text: no interval.",
                                    .choices = {"oneDay", "oneWeek", "twoWeeks", "threeWeeks", "fourWeeks"},
                                    .choicesInAnyCase = true}),
        field<&P::frequencyElapsedMode>(
            "frequencyElapsedMode",
            {.help =
                 "Asks once an interval, or again after each deferral. Any text but singlePromptMode means recurring.",
             .choices = {"singlePromptMode", "recurringPromptMode"}}),
        field<&P::deferralWindow>("deferralWindow",
                                  {.help = "Time after a deferral before recurringPromptMode asks again.",
                                   .range = KeyRange{0},
                                   .unit = "minutes"}),
        field<&P::patchDayFrequency>("patchDayFrequency",
                                     {.help = "Asks once on a patch day, or again after each deferral. Any text but "
                                              "singlePromptMode means recurring.",
                                      .choices = {"singlePromptMode", "recurringPromptMode"}}),
        field<&P::patchDayDeferralWindow>(
            "patchDayDeferralWindow",
            {.help = "The same time on a patch day.", .range = KeyRange{0}, .unit = "minutes"})};
  }
  static constexpr auto fields() { return withoutNotes(keys()); }
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
inline constexpr KeyNote opens{
    .help = "Time from which updates may run on this day; counts together with its end time.",
    .unit = "24-hour clock",
    .pattern = clock,
    .example = "09:00"};
inline constexpr KeyNote closes{.help =
                                    "Time up to which updates may run on this day. One before the start time means "
                                    "midnight; the hours after it are the next day's.",
                                .unit = "24-hour clock",
                                .pattern = clock,
                                .example = "17:00"};
}  // namespace limitNotes

/// The limitations of a week. The keys of a day are its name, "{day}StartTime" and "{day}EndTime".
struct RunLimits {
  bool monday = true, tuesday = true, wednesday = true, thursday = true, friday = true, saturday = true, sunday = true;
  std::optional<std::string> mondayStartTime, mondayEndTime, tuesdayStartTime, tuesdayEndTime, wednesdayStartTime,
      wednesdayEndTime, thursdayStartTime, thursdayEndTime, fridayStartTime, fridayEndTime, saturdayStartTime,
      saturdayEndTime, sundayStartTime, sundayEndTime;

  /// By the calendar's number: 1 Sunday to 7 Saturday.
  DayLimits day(int weekday) const;

  static constexpr auto keys() {
    using L = RunLimits;
    return std::tuple{field<&L::monday>("monday", limitNotes::day),
                      field<&L::mondayStartTime>("mondayStartTime", limitNotes::opens),
                      field<&L::mondayEndTime>("mondayEndTime", limitNotes::closes),
                      field<&L::tuesday>("tuesday", limitNotes::day),
                      field<&L::tuesdayStartTime>("tuesdayStartTime", limitNotes::opens),
                      field<&L::tuesdayEndTime>("tuesdayEndTime", limitNotes::closes),
                      field<&L::wednesday>("wednesday", limitNotes::day),
                      field<&L::wednesdayStartTime>("wednesdayStartTime", limitNotes::opens),
                      field<&L::wednesdayEndTime>("wednesdayEndTime", limitNotes::closes),
                      field<&L::thursday>("thursday", limitNotes::day),
                      field<&L::thursdayStartTime>("thursdayStartTime", limitNotes::opens),
                      field<&L::thursdayEndTime>("thursdayEndTime", limitNotes::closes),
                      field<&L::friday>("friday", limitNotes::day),
                      field<&L::fridayStartTime>("fridayStartTime", limitNotes::opens),
                      field<&L::fridayEndTime>("fridayEndTime", limitNotes::closes),
                      field<&L::saturday>("saturday", limitNotes::day),
                      field<&L::saturdayStartTime>("saturdayStartTime", limitNotes::opens),
                      field<&L::saturdayEndTime>("saturdayEndTime", limitNotes::closes),
                      field<&L::sunday>("sunday", limitNotes::day),
                      field<&L::sundayStartTime>("sundayStartTime", limitNotes::opens),
                      field<&L::sundayEndTime>("sundayEndTime", limitNotes::closes)};
  }
  static constexpr auto fields() { return withoutNotes(keys()); }
};

/// InitialSizePrefs, GraceSizePrefs and SelfServiceSizePrefs share one shape.
struct PromptSizePrefs {
  std::optional<std::int64_t> promptHeight;
  std::optional<std::int64_t> promptWidth;
  static constexpr auto keys() {
    return std::tuple{
        field<&PromptSizePrefs::promptHeight>(
            "promptHeight", {.help = "Height of the window without its list; counts together with promptWidth.",
                             .range = KeyRange{1},
                             .unit = "points"}),
        field<&PromptSizePrefs::promptWidth>("promptWidth",
                                             {.help = "Width of the window; counts together with promptHeight.",
                                              .range = KeyRange{1},
                                              .unit = "points"})};
  }
  static constexpr auto fields() { return withoutNotes(keys()); }
};

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
  static constexpr auto keys() {
    using P = ScheduledUpdatesPrefs;
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
        field<&P::customIcon>(
            "customIcon",
            {.help = "Path of the icon of the prompts; absent: Self Service branding or the App Store icon.",
             .example = "/Library/Management/icon.png"}),
        field<&P::initialPromptOverlayIcon>(
            "initialPromptOverlayIcon",
            {.help =
                 "Path of the small icon over the icon of the prompts, or selfservice for the Self Service branding.",
             .example = "selfservice"}),
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
        field<&P::customDeferButton>(
            "customDeferButton",
            {.help = "Text of the defer button; deferCount is replaced where deferrals are limited.",
             .ifAbsent = "Defer (deferCount)"}),
        field<&P::customSkipButton>(
            "customSkipButton",
            {.help = "Text of the button that takes the place of the defer button in --update selfService.",
             .ifAbsent = "Skip"}),
        field<&P::customUpdateButton>("customUpdateButton",
                                      {.help = "Text of the button that starts the update.", .ifAbsent = "Update"}),
        field<&P::appListType>(
            "appListType", {.help = "Shows the apps as a list in the prompt (vertical), or names them in its message.",
                            .choices = {"vertical", "horizontal"},
                            .ifAbsent = "horizontal"}),
        field<&P::refreshInterval>("refreshInterval",
                                   {.help = "Time after which the prompt that offers a deferral comes to the front "
                                            "again; others are brought into this range.",
                                    .range = KeyRange{10, 120},
                                    .unit = "seconds"}),
        field<&P::acceptableAppBundleIDs>("acceptableAppBundleIDs",
                                          {.help = "Bundle identifiers of apps during whose use nobody is asked: one "
                                                   "in the foreground postpones the prompt.",
                                           .example = "com.apple.iWork.Keynote"}),
        field<&P::acceptableAppAssertions>(
            "acceptableAppAssertions",
            {.help = "Names of processes that postpone the prompt while they keep the Mac from sleeping, as in a call.",
             .example = "zoom.us"}),
        field<&P::acceptableDNDMode>("acceptableDNDMode",
                                     {.help = "Postpones the prompt while Do Not Disturb or a Focus is on."}),
        field<&P::acceptableCameraUsage>(
            "acceptableCameraUsage",
            {.help = "Postpones the prompt while a camera is in use; Apple silicon needs macOS 13."}),
        field<&P::acceptableScreenSharing>("acceptableScreenSharing",
                                           {.help = "Postpones the prompt while the screen is shared."}),
        field<&P::updateProgressPosition>(
            "updateProgressPosition",
            {.help = "Where the progress window and the prompts after it stand. Another text: topright.",
             .choices = promptPositions,
             .choicesInAnyCase = true,
             .ifAbsent = "topright"}),
        field<&P::updateProgressPrompt>("updateProgressPrompt",
                                        {.help = "Progress window in front of others, among them, or none.",
                                         .choices = {"focusPrompt", "noFocusPrompt", "noPrompt"},
                                         .ifAbsent = "noFocusPrompt"}),
        field<&P::updateProgressOverlayIcon>("updateProgressOverlayIcon",
                                             {.help = "Path of the small icon over the app's icon in the progress "
                                                      "window, or selfservice for the Self Service branding.",
                                              .example = "selfservice"}),
        field<&P::autoRelaunchApps>("autoRelaunchApps", {.help = "Opens apps again that were quit for their update."}),
        field<&P::displayCompletePrompt>("displayCompletePrompt",
                                         {.help = "Tells the user when the updates are done."})};
  }
  static constexpr auto fields() { return withoutNotes(keys()); }
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
  static constexpr auto keys() {
    using P = ForcedUpdatesPrefs;
    return std::tuple{
        field<&P::runLimitations>("runLimitations", {.help = "Days and times at which forced updates may run."}),
        field<&P::customInitialPromptSize>("customInitialPromptSize",
                                           {.help = "Size of the prompt that offers a deferral."}),
        field<&P::customGracePromptSize>("customGracePromptSize", {.help = "Size of the grace period prompt."}),
        field<&P::customIcon>(
            "customIcon",
            {.help = "Path of the icon of the prompts; absent: Self Service branding or the App Store icon.",
             .example = "/Library/Management/icon.png"}),
        field<&P::initialPromptOverlayIcon>(
            "initialPromptOverlayIcon",
            {.help =
                 "Path of the small icon over the icon of the prompts, or selfservice for the Self Service branding.",
             .example = "selfservice"}),
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
        field<&P::customUpdateButton>("customUpdateButton",
                                      {.help = "Text of the button that starts the update.", .ifAbsent = "Update"}),
        field<&P::refreshInterval>("refreshInterval",
                                   {.help = "Time after which the prompt that offers a deferral comes to the front "
                                            "again; others are brought into this range.",
                                    .range = KeyRange{10, 120},
                                    .unit = "seconds"}),
        field<&P::acceptableAppBundleIDs>("acceptableAppBundleIDs",
                                          {.help = "Bundle identifiers of apps during whose use nobody is asked: one "
                                                   "in the foreground postpones the prompt.",
                                           .example = "com.apple.iWork.Keynote"}),
        field<&P::acceptableAppAssertions>(
            "acceptableAppAssertions",
            {.help = "Names of processes that postpone the prompt while they keep the Mac from sleeping, as in a call.",
             .example = "zoom.us"}),
        field<&P::acceptableDNDMode>("acceptableDNDMode",
                                     {.help = "Postpones the prompt while Do Not Disturb or a Focus is on."}),
        field<&P::acceptableCameraUsage>(
            "acceptableCameraUsage",
            {.help = "Postpones the prompt while a camera is in use; Apple silicon needs macOS 13."}),
        field<&P::acceptableScreenSharing>("acceptableScreenSharing",
                                           {.help = "Postpones the prompt while the screen is shared."}),
        field<&P::updateProgressPosition>(
            "updateProgressPosition",
            {.help = "Where the progress window and the prompts after it stand. Another text: topright.",
             .choices = promptPositions,
             .choicesInAnyCase = true}),
        field<&P::updateProgressPrompt>("updateProgressPrompt",
                                        {.help = "Progress window in front of others, among them, or none.",
                                         .choices = {"focusPrompt", "noFocusPrompt", "noPrompt"}}),
        field<&P::updateProgressOverlayIcon>("updateProgressOverlayIcon",
                                             {.help = "Path of the small icon over the app's icon in the progress "
                                                      "window, or selfservice for the Self Service branding.",
                                              .example = "selfservice"}),
        field<&P::autoRelaunchApps>("autoRelaunchApps", {.help = "Opens apps again that were quit for their update."}),
        field<&P::displayCompletePrompt>("displayCompletePrompt",
                                         {.help = "Tells the user when the updates are done."})};
  }
  static constexpr auto fields() { return withoutNotes(keys()); }
};

/// The administrator's property list. A missing section behaves as one with every key missing.
struct CustomPrefs {
  GeneralOptionPrefs GeneralOptions;
  ScheduledUpdatesPrefs ScheduledUpdates;
  ForcedUpdatesPrefs ForcedUpdates;
  static constexpr auto keys() {
    return std::tuple{
        field<&CustomPrefs::GeneralOptions>("GeneralOptions",
                                            {.help = "What the agent does at all, and for which apps."}),
        field<&CustomPrefs::ScheduledUpdates>("ScheduledUpdates",
                                              {.help = "When and how users are asked about updates of apps in use."}),
        field<&CustomPrefs::ForcedUpdates>(
            "ForcedUpdates", {.help = "How users are asked about updates that an administrator forces."})};
  }
  static constexpr auto fields() { return withoutNotes(keys()); }
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
