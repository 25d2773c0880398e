#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/platform/platform.h"
#include "vorlu/state/log.h"
#include "vorlu/state/record.h"

namespace vorlu {

using TextList = std::vector<std::string>;

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
  static constexpr auto fields() {
    using P = GeneralOptionPrefs;
    return std::array{field<&P::publicKey>("publicKey"),
                      field<&P::hourlyCheck>("hourlyCheck"),
                      field<&P::updatePrompts>("updatePrompts"),
                      field<&P::autoUpdate>("autoUpdate"),
                      field<&P::allowedAppInstalls>("allowedAppInstalls"),
                      field<&P::excludedAppInstalls>("excludedAppInstalls"),
                      field<&P::allowedAppUpdates>("allowedAppUpdates"),
                      field<&P::excludedAppUpdates>("excludedAppUpdates")};
  }
};

struct DeferralPrefs {
  std::string deferralOption = "specifyDeferralLimit";
  std::int64_t specifyLimit = 2;
  static constexpr auto fields() {
    return std::array{field<&DeferralPrefs::deferralOption>("deferralOption"),
                      field<&DeferralPrefs::specifyLimit>("specifyLimit")};
  }
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
  static constexpr auto fields() {
    using P = RunPrefs;
    return std::array{field<&P::runType>("runType"),
                      field<&P::patchDay>("patchDay"),
                      field<&P::missedUpdatePrompt>("missedUpdatePrompt"),
                      field<&P::frequencyOption>("frequencyOption"),
                      field<&P::frequencyElapsedMode>("frequencyElapsedMode"),
                      field<&P::deferralWindow>("deferralWindow"),
                      field<&P::patchDayFrequency>("patchDayFrequency"),
                      field<&P::patchDayDeferralWindow>("patchDayDeferralWindow")};
  }
};

/// One day of the run limitations. The times as the profile gives them, such as "09:00".
struct DayLimits {
  bool allowed = true;
  std::optional<std::string> startTime;
  std::optional<std::string> endTime;
};

/// The limitations of a week. The keys of a day are its name, "{day}StartTime" and "{day}EndTime".
struct RunLimits {
  bool monday = true, tuesday = true, wednesday = true, thursday = true, friday = true, saturday = true, sunday = true;
  std::optional<std::string> mondayStartTime, mondayEndTime, tuesdayStartTime, tuesdayEndTime, wednesdayStartTime,
      wednesdayEndTime, thursdayStartTime, thursdayEndTime, fridayStartTime, fridayEndTime, saturdayStartTime,
      saturdayEndTime, sundayStartTime, sundayEndTime;

  /// By the calendar's number: 1 Sunday to 7 Saturday.
  DayLimits day(int weekday) const;

  static constexpr auto fields() {
    using L = RunLimits;
    return std::array{field<&L::monday>("monday"),
                      field<&L::mondayStartTime>("mondayStartTime"),
                      field<&L::mondayEndTime>("mondayEndTime"),
                      field<&L::tuesday>("tuesday"),
                      field<&L::tuesdayStartTime>("tuesdayStartTime"),
                      field<&L::tuesdayEndTime>("tuesdayEndTime"),
                      field<&L::wednesday>("wednesday"),
                      field<&L::wednesdayStartTime>("wednesdayStartTime"),
                      field<&L::wednesdayEndTime>("wednesdayEndTime"),
                      field<&L::thursday>("thursday"),
                      field<&L::thursdayStartTime>("thursdayStartTime"),
                      field<&L::thursdayEndTime>("thursdayEndTime"),
                      field<&L::friday>("friday"),
                      field<&L::fridayStartTime>("fridayStartTime"),
                      field<&L::fridayEndTime>("fridayEndTime"),
                      field<&L::saturday>("saturday"),
                      field<&L::saturdayStartTime>("saturdayStartTime"),
                      field<&L::saturdayEndTime>("saturdayEndTime"),
                      field<&L::sunday>("sunday"),
                      field<&L::sundayStartTime>("sundayStartTime"),
                      field<&L::sundayEndTime>("sundayEndTime")};
  }
};

/// InitialSizePrefs, GraceSizePrefs and SelfServiceSizePrefs share one shape.
struct PromptSizePrefs {
  std::optional<std::int64_t> promptHeight;
  std::optional<std::int64_t> promptWidth;
  static constexpr auto fields() {
    return std::array{field<&PromptSizePrefs::promptHeight>("promptHeight"),
                      field<&PromptSizePrefs::promptWidth>("promptWidth")};
  }
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
  static constexpr auto fields() {
    using P = ScheduledUpdatesPrefs;
    return std::array{field<&P::deferralConfiguration>("deferralConfiguration"),
                      field<&P::runFrequency>("runFrequency"),
                      field<&P::runLimitations>("runLimitations"),
                      field<&P::customInitialPromptSize>("customInitialPromptSize"),
                      field<&P::customGracePromptSize>("customGracePromptSize"),
                      field<&P::customSelfServicePromptSize>("customSelfServicePromptSize"),
                      field<&P::gracePeriodMinutes>("gracePeriodMinutes"),
                      field<&P::customIcon>("customIcon"),
                      field<&P::initialPromptOverlayIcon>("initialPromptOverlayIcon"),
                      field<&P::singleAppTitle>("singleAppTitle"),
                      field<&P::multipleAppsTitle>("multipleAppsTitle"),
                      field<&P::singleInitialQuitPromptMessage>("singleInitialQuitPromptMessage"),
                      field<&P::multipleInitialQuitPromptMessage>("multipleInitialQuitPromptMessage"),
                      field<&P::singleSelfServiceQuitMessage>("singleSelfServiceQuitMessage"),
                      field<&P::multipleSelfServiceQuitMessage>("multipleSelfServiceQuitMessage"),
                      field<&P::singleAppGracePeriodQuitMessage>("singleAppGracePeriodQuitMessage"),
                      field<&P::multipleAppGracePeriodQuitMessage>("multipleAppGracePeriodQuitMessage"),
                      field<&P::customDeferButton>("customDeferButton"),
                      field<&P::customSkipButton>("customSkipButton"),
                      field<&P::customUpdateButton>("customUpdateButton"),
                      field<&P::appListType>("appListType"),
                      field<&P::refreshInterval>("refreshInterval"),
                      field<&P::acceptableAppBundleIDs>("acceptableAppBundleIDs"),
                      field<&P::acceptableAppAssertions>("acceptableAppAssertions"),
                      field<&P::acceptableDNDMode>("acceptableDNDMode"),
                      field<&P::acceptableCameraUsage>("acceptableCameraUsage"),
                      field<&P::acceptableScreenSharing>("acceptableScreenSharing"),
                      field<&P::updateProgressPosition>("updateProgressPosition"),
                      field<&P::updateProgressPrompt>("updateProgressPrompt"),
                      field<&P::updateProgressOverlayIcon>("updateProgressOverlayIcon"),
                      field<&P::autoRelaunchApps>("autoRelaunchApps"),
                      field<&P::displayCompletePrompt>("displayCompletePrompt")};
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
  static constexpr auto fields() {
    using P = ForcedUpdatesPrefs;
    return std::array{field<&P::runLimitations>("runLimitations"),
                      field<&P::customInitialPromptSize>("customInitialPromptSize"),
                      field<&P::customGracePromptSize>("customGracePromptSize"),
                      field<&P::customIcon>("customIcon"),
                      field<&P::initialPromptOverlayIcon>("initialPromptOverlayIcon"),
                      field<&P::customTitle>("customTitle"),
                      field<&P::initialQuitPromptMessage>("initialQuitPromptMessage"),
                      field<&P::gracePeriodQuitPromptMessage>("gracePeriodQuitPromptMessage"),
                      field<&P::customDeferButton>("customDeferButton"),
                      field<&P::customUpdateButton>("customUpdateButton"),
                      field<&P::refreshInterval>("refreshInterval"),
                      field<&P::acceptableAppBundleIDs>("acceptableAppBundleIDs"),
                      field<&P::acceptableAppAssertions>("acceptableAppAssertions"),
                      field<&P::acceptableDNDMode>("acceptableDNDMode"),
                      field<&P::acceptableCameraUsage>("acceptableCameraUsage"),
                      field<&P::acceptableScreenSharing>("acceptableScreenSharing"),
                      field<&P::updateProgressPosition>("updateProgressPosition"),
                      field<&P::updateProgressPrompt>("updateProgressPrompt"),
                      field<&P::updateProgressOverlayIcon>("updateProgressOverlayIcon"),
                      field<&P::autoRelaunchApps>("autoRelaunchApps"),
                      field<&P::displayCompletePrompt>("displayCompletePrompt")};
  }
};

/// The administrator's property list. A missing section behaves as one with every key missing.
struct CustomPrefs {
  GeneralOptionPrefs GeneralOptions;
  ScheduledUpdatesPrefs ScheduledUpdates;
  ForcedUpdatesPrefs ForcedUpdates;
  static constexpr auto fields() {
    return std::array{field<&CustomPrefs::GeneralOptions>("GeneralOptions"),
                      field<&CustomPrefs::ScheduledUpdates>("ScheduledUpdates"),
                      field<&CustomPrefs::ForcedUpdates>("ForcedUpdates")};
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
