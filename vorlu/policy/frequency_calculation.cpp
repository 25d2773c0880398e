#include "vorlu/policy/frequency_calculation.h"

#include <algorithm>
#include <array>

#include "vorlu/detection/letter_case.h"
#include "vorlu/state/preferences.h"

namespace vorlu {
namespace {

constexpr std::int64_t secondsPerDay = 86400;

constexpr std::array options = {
    FrequencyOption{"oneday", 86400, "day", "Run frequency option configured: Once every day"},
    FrequencyOption{"oneweek", 604800, "week", "Run frequency option configured: Once every week"},
    FrequencyOption{"twoweeks", 1209600, "two weeks", "Run frequency option configured: Once every two weeks"},
    FrequencyOption{"threeweeks", 1814400, "three weeks", "Run frequency option configured: Once every three weeks"},
    FrequencyOption{"fourweeks", 2419200, "four weeks", "Run frequency option configured: Once every four weeks"},
};

}  // namespace

const FrequencyOption* findFrequencyOption(std::string_view option) {
  const auto found = std::find_if(options.begin(), options.end(),
                                  [&](const FrequencyOption& row) { return isInAnyCase(option, row.lowered); });
  return found == options.end() ? nullptr : &*found;
}

FrequencyCalculation::FrequencyCalculation(Clock& clock) {
  const Seconds moment = clock.now();
  const CalendarFields local = clock.fields(moment, Zone::local);
  now_ = static_cast<std::int64_t>(moment);
  startOfToday_ = now_ - local.hour * 3600 - local.minute * 60 - local.second;
  today_ = local.weekday;
}

std::int64_t FrequencyCalculation::frequencyCutoffTime(std::string_view option) const {
  const FrequencyOption* known = findFrequencyOption(option);
  return now_ - (known ? known->seconds : 0);
}

std::int64_t FrequencyCalculation::lastPatchDayStartTime(std::int64_t patchDay) const {
  // Numbers that no day has are kept small enough to reckon with.
  const std::int64_t day = std::clamp<std::int64_t>(patchDay, -1000, 1000);
  const std::int64_t daysBack = today_ >= day ? today_ - day : today_ + 7 - day;
  return startOfToday_ - daysBack * secondsPerDay;
}

Scheme schemeOf(std::string_view runType) {
  if (isInAnyCase(runType, "specifyfrequency")) return Scheme::frequency;
  return isInAnyCase(runType, "specifypatchday") ? Scheme::patchDay : Scheme::unknown;
}

PromptMode promptModeOf(std::string_view mode) {
  return mode == "singlePromptMode" ? PromptMode::single : PromptMode::recurring;
}

FrequencyReason frequencyDecision(std::int64_t cutoff, PromptMode mode, const UpdateActivity& activity) {
  if (activity.lastRun <= cutoff) return FrequencyReason::noActivity;
  if (!activity.userDeferred) return FrequencyReason::updated;
  return mode == PromptMode::single ? FrequencyReason::deferredSingle : FrequencyReason::deferredRecurring;
}

FrequencyReason frequencyDecision(const FrequencyCalculation& times, const RunPrefs& prefs,
                                  const UpdateActivity& activity) {
  return frequencyDecision(times.frequencyCutoffTime(prefs.frequencyOption), promptModeOf(prefs.frequencyElapsedMode),
                           activity);
}

SchemeVerdict verdictOf(FrequencyReason reason) {
  switch (reason) {
    case FrequencyReason::noActivity:
      return SchemeVerdict::goOn;
    case FrequencyReason::deferredRecurring:
      return SchemeVerdict::askDeferralWindow;
    case FrequencyReason::deferredSingle:
    case FrequencyReason::updated:
      break;
  }
  return SchemeVerdict::end;
}

PatchDayReason decisionOnPatchDay(std::int64_t startOfToday, PromptMode mode, const UpdateActivity& activity) {
  const bool ranToday = activity.lastRun > startOfToday;
  if (mode == PromptMode::single) return ranToday ? PatchDayReason::singleDone : PatchDayReason::singleDue;
  if (!ranToday) return PatchDayReason::recurringDue;
  return activity.userDeferred ? PatchDayReason::recurringDeferred : PatchDayReason::recurringUpdated;
}

PatchDayReason decisionOnOtherDay(std::int64_t lastPatchDayStart, PromptMode mode, bool missedUpdatePrompt,
                                  const UpdateActivity& activity) {
  if (!missedUpdatePrompt) return PatchDayReason::missedNotWanted;
  if (activity.lastRun == 0) return PatchDayReason::neverRun;
  const bool ranSince = activity.lastRun > lastPatchDayStart;
  if (mode == PromptMode::single) return ranSince ? PatchDayReason::madeUpSingle : PatchDayReason::missedSingle;
  return ranSince && activity.userDeferred ? PatchDayReason::deferredSince : PatchDayReason::updatedSince;
}

PatchDayReason patchDayDecision(const FrequencyCalculation& times, const RunPrefs& prefs,
                                const UpdateActivity& activity) {
  const PromptMode mode = promptModeOf(prefs.patchDayFrequency);
  if (times.today() == prefs.patchDay) return decisionOnPatchDay(times.startOfTodayTime(), mode, activity);
  return decisionOnOtherDay(times.lastPatchDayStartTime(prefs.patchDay), mode, prefs.missedUpdatePrompt, activity);
}

SchemeVerdict verdictOf(PatchDayReason reason) {
  switch (reason) {
    case PatchDayReason::singleDue:
    case PatchDayReason::recurringDue:
    case PatchDayReason::missedSingle:
      return SchemeVerdict::goOn;
    case PatchDayReason::recurringDeferred:
    case PatchDayReason::deferredSince:
      return SchemeVerdict::askDeferralWindow;
    case PatchDayReason::singleDone:
    case PatchDayReason::recurringUpdated:
    case PatchDayReason::missedNotWanted:
    case PatchDayReason::neverRun:
    case PatchDayReason::madeUpSingle:
    case PatchDayReason::updatedSince:
      break;
  }
  return SchemeVerdict::end;
}

}  // namespace vorlu
