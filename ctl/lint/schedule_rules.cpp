#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "ctl/lint/preference_rules.h"
#include "vorlu/policy/deferrals.h"
#include "vorlu/policy/frequency_calculation.h"
#include "vorlu/policy/run_limits.h"
#include "vorlu/policy/weekday.h"
#include "vorlu/state/replacement.h"

namespace vorlu::ctl {
namespace {

constexpr std::int64_t minutesPerDay = 24 * 60;

std::string digitsOf(const std::string& time) {
  return replacedAll(time, ":", "");
}

std::string inFrequency(std::string_view key) {
  return fmt::format("ScheduledUpdates.runFrequency.{}", key);
}

void checkUnused(RecordLint& lint, std::initializer_list<std::string_view> keys, const std::string& why) {
  for (const std::string_view key : keys) {
    if (lint.has(inFrequency(key)))
      lint.warning(inFrequency(key), fmt::format("isn't used, because {}", why), "remove it, or change runType");
  }
}

/// The minutes between two prompts, which only recurring prompts know.
void checkWindow(RecordLint& lint, std::string_view key, std::int64_t minutes, std::string_view modeKey,
                 PromptMode mode, std::int64_t longest) {
  if (!lint.has(inFrequency(key))) return;
  if (mode == PromptMode::single)
    return lint.warning(inFrequency(key), fmt::format("isn't used, because {} is \"singlePromptMode\"", modeKey),
                        "remove it, or let prompts recur");
  if (minutes > longest)
    lint.warning(
        inFrequency(key),
        fmt::format("of {} minutes is longer than {} minutes, so a deferred update isn't asked for again before "
                    "the next time is due anyway",
                    minutes, longest),
        "give fewer minutes");
}

void checkScheme(RecordLint& lint, const RunPrefs& prefs) {
  const PromptMode onPatchDay = promptModeOf(prefs.patchDayFrequency);
  switch (schemeOf(prefs.runType)) {
    case Scheme::frequency:
      checkUnused(lint, {"patchDay", "patchDayFrequency", "patchDayDeferralWindow", "missedUpdatePrompt"},
                  "runType is \"specifyFrequency\" or missing");
      if (const FrequencyOption* option = findFrequencyOption(prefs.frequencyOption))
        checkWindow(lint, "deferralWindow", prefs.deferralWindow, "frequencyElapsedMode",
                    promptModeOf(prefs.frequencyElapsedMode), option->seconds / 60);
      break;
    case Scheme::patchDay:
      checkUnused(lint, {"frequencyOption", "frequencyElapsedMode", "deferralWindow"},
                  "runType is \"specifyPatchDay\"");
      checkWindow(lint, "patchDayDeferralWindow", prefs.patchDayDeferralWindow, "patchDayFrequency", onPatchDay,
                  prefs.missedUpdatePrompt ? 7 * minutesPerDay : minutesPerDay);
      break;
    case Scheme::unknown:
      break;
  }
}

void checkDeferrals(RecordLint& lint, const DeferralPrefs& prefs) {
  const std::string limit = "ScheduledUpdates.deferralConfiguration.specifyLimit";
  if (!lint.has(limit)) return;
  const DeferralMode mode = deferralModeOf(prefs.deferralOption);
  if (mode == DeferralMode::unlimited || mode == DeferralMode::disabled)
    return lint.warning(limit, fmt::format("isn't used, because deferralOption is \"{}\"", prefs.deferralOption),
                        "remove it, or say \"specifyDeferralLimit\"");
  if (prefs.specifyLimit == 0)
    lint.warning(limit, "is 0, so every update begins with the grace period",
                 "say \"disableDeferrals\" if that is meant");
}

/// The days and times of one section.
class LimitsReview {
 public:
  LimitsReview(RecordLint& lint, const RunLimits& limits, std::string section, std::optional<std::int64_t> patchDay)
      : lint_(lint), limits_(limits), section_(std::move(section)), patchDay_(patchDay) {}

  void review() {
    const auto isLimited = [&](int day) {
      return runDayVerdict(limits_.day(day).allowed, patchDay_ == day) == RunDay::limited;
    };
    constexpr std::array days = {2, 3, 4, 5, 6, 7, 1};
    if (std::ranges::all_of(days, isLimited))
      lint_.error(section_, "no day of the week is allowed, so nothing ever runs", "allow at least one day");
    for (const int day : days) reviewDay(day, isLimited(day));
  }

 private:
  void reviewDay(int day, bool limited) {
    const std::string name = weekdayName(day);
    std::string lowered = name;
    lowered.front() = static_cast<char>(lowered.front() - 'A' + 'a');
    const std::string start = fmt::format("{}.{}StartTime", section_, lowered);
    const std::string end = fmt::format("{}.{}EndTime", section_, lowered);
    const DayLimits limits = limits_.day(day);
    if (!lint_.has(start) && !lint_.has(end)) return;
    if (limited)
      return lint_.warning(lint_.has(start) ? start : end, fmt::format("isn't used, because {} is false", lowered),
                           fmt::format("remove the times, or allow {}", name));
    if (lint_.has(start) != lint_.has(end))
      return lint_.error(lint_.has(start) ? end : start,
                         "is missing, so the other time counts for nothing and there is no limit on this day",
                         "give both times, or neither");
    reviewTimes(name, start, end, limits);
  }

  void reviewTimes(const std::string& day, const std::string& start, const std::string& end, const DayLimits& limits) {
    // 23:59 is a time itself, and the same as another one is no fault of it.
    const auto isTime = [](const std::string& time) {
      const RunTime verdict = runTimeVerdict({true, time, "23:59"}, 0);
      return verdict != RunTime::invalid && verdict != RunTime::notLimited;
    };
    for (const auto& [key, time] : {std::pair{&start, &limits.startTime}, std::pair{&end, &limits.endTime}}) {
      if (isTime(time->value_or(""))) continue;
      lint_.error(*key, fmt::format("\"{}\" isn't a time, so there is no limit on this day", time->value_or("")),
                  "give hours and minutes of 24 hours, such as \"09:00\" or \"21:30\"");
      lint_.settle(start);
      lint_.settle(end);
    }
    if (lint_.isSettled(start)) return;
    if (runTimeVerdict(limits, 0) == RunTime::sameTimes)
      return lint_.error(end, "is the same as the start, so there is no limit on this day",
                         "give another end, or remove both");
    const bool overMidnight =
        digitsOf(*limits.startTime) > digitsOf(*limits.endTime) && runTimeVerdict(limits, 0) == RunTime::inside;
    const std::string next = weekdayName(weekdayNumberAfter(day));
    if (overMidnight)
      lint_.warning(
          end,
          fmt::format("lies before the start: on {0} updates run until {1} and again from {2}, and what comes "
                      "after midnight is decided by the times of {3}",
                      day, *limits.endTime, *limits.startTime, next),
          fmt::format("if the night from {0} to {1} is meant, give {1} times as well", day, next));
  }

  static int weekdayNumberAfter(const std::string& day) {
    for (int number = 1; number <= 7; ++number)
      if (weekdayName(number) == day) return number % 7 + 1;
    return 1;
  }

  RecordLint& lint_;
  const RunLimits& limits_;
  std::string section_;
  std::optional<std::int64_t> patchDay_;
};

}  // namespace

void checkSchedule(SettingsLint& settings) {
  const ScheduledUpdatesPrefs& scheduled = settings.prefs.ScheduledUpdates;
  checkScheme(settings.lint, scheduled.runFrequency);
  checkDeferrals(settings.lint, scheduled.deferralConfiguration);
}

void checkRunLimits(SettingsLint& settings) {
  const ScheduledUpdatesPrefs& scheduled = settings.prefs.ScheduledUpdates;
  const bool byPatchDay = schemeOf(scheduled.runFrequency.runType) == Scheme::patchDay;
  LimitsReview(settings.lint, scheduled.runLimitations, "ScheduledUpdates.runLimitations",
               byPatchDay ? std::optional(scheduled.runFrequency.patchDay) : std::nullopt)
      .review();
  LimitsReview(settings.lint, settings.prefs.ForcedUpdates.runLimitations, "ForcedUpdates.runLimitations", std::nullopt)
      .review();
}

}  // namespace vorlu::ctl
