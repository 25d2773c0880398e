#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vorlu/platform/clock.h"

namespace vorlu {

struct RunPrefs;

/// How often a user may be asked under `specifyFrequency`.
struct FrequencyOption {
  std::string_view lowered;  ///< value of `frequencyOption`, which may come in any letter case
  std::int64_t seconds;
  std::string_view period;  ///< for messages: "in the last {period}"
  std::string_view interval;
};
/// Nothing for an unknown value.
const FrequencyOption* findFrequencyOption(std::string_view option);

/// The moments that the two schemes compare with, in whole seconds since the Unix epoch. Weekdays and midnight are the
/// machine's own; a change of the clock for daylight saving isn't allowed for.
class FrequencyCalculation {
 public:
  explicit FrequencyCalculation(Clock& clock);

  std::int64_t now() const { return now_; }
  int today() const { return today_; }  ///< 1 Sunday to 7 Saturday
  /// `now` less the interval of the option; an unknown one has none.
  std::int64_t frequencyCutoffTime(std::string_view option) const;
  std::int64_t startOfTodayTime() const { return startOfToday_; }
  /// Midnight at which the most recent patch day began; today's, when today is one.
  std::int64_t lastPatchDayStartTime(std::int64_t patchDay) const;

 private:
  std::int64_t now_;
  std::int64_t startOfToday_;
  int today_;
};

enum class Scheme { frequency, patchDay, unknown };
/// By `runType`, in any letter case.
Scheme schemeOf(std::string_view runType);

/// One prompt a period or day, or one again and again. Compared exactly: any other text means recurring prompts.
enum class PromptMode { single, recurring };
PromptMode promptModeOf(std::string_view mode);

/// What the run data file tells of the last update activity.
struct UpdateActivity {
  std::int64_t lastRun = 0;  ///< seconds since the epoch, 0 before the first
  bool userDeferred = false;
};

/// What a scheme makes of a run.
enum class SchemeVerdict {
  goOn,
  end,
  askDeferralWindow,  ///< go on once the deferral has elapsed
};

enum class FrequencyReason { noActivity, deferredSingle, deferredRecurring, updated };
FrequencyReason frequencyDecision(std::int64_t cutoff, PromptMode mode, const UpdateActivity& activity);
/// The same by the profile's keys.
FrequencyReason frequencyDecision(const FrequencyCalculation& times, const RunPrefs& prefs,
                                  const UpdateActivity& activity);
SchemeVerdict verdictOf(FrequencyReason reason);

enum class PatchDayReason {
  // on the patch day
  singleDone,
  singleDue,
  recurringDue,
  recurringDeferred,
  recurringUpdated,
  // on another day
  missedNotWanted,  ///< a missed patch day isn't made up for
  neverRun,
  missedSingle,
  madeUpSingle,
  deferredSince,  ///< a recurring prompt was deferred and goes on
  updatedSince,
};
PatchDayReason decisionOnPatchDay(std::int64_t startOfToday, PromptMode mode, const UpdateActivity& activity);
PatchDayReason decisionOnOtherDay(std::int64_t lastPatchDayStart, PromptMode mode, bool missedUpdatePrompt,
                                  const UpdateActivity& activity);
/// One of both, by the profile's keys and the day it is.
PatchDayReason patchDayDecision(const FrequencyCalculation& times, const RunPrefs& prefs,
                                const UpdateActivity& activity);
SchemeVerdict verdictOf(PatchDayReason reason);

}  // namespace vorlu
