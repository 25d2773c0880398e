#include "vorlu/policy/run_limits.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/policy/weekday.h"
#include "vorlu/state/format_date.h"
#include "vorlu/state/replacement.h"

namespace vorlu {
namespace {

/// A limit with its colons removed.
std::string digitsOf(const std::optional<std::string>& time) {
  return replacedAll(time.value_or(""), ":", "");
}

/// Four ASCII digits of a 24 hour clock, as hours times 100 plus minutes.
std::optional<int> clockTimeOf(const std::string& digits) {
  const bool isDigits = std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (digits.size() != 4 || !isDigits) return std::nullopt;
  const int time = std::stoi(digits);
  return time / 100 < 24 && time % 100 < 60 ? std::optional(time) : std::nullopt;
}

}  // namespace

RunDay runDayVerdict(bool dayAllowed, bool isPatchDay) {
  if (dayAllowed) return RunDay::notLimited;
  return isPatchDay ? RunDay::patchDayOverrides : RunDay::limited;
}

bool isInsideWindow(int start, int end, int clockTime) {
  return start < end ? start <= clockTime && clockTime <= end : clockTime >= start || clockTime < end;
}

RunTime runTimeVerdict(const DayLimits& limits, int clockTime) {
  const std::string startDigits = digitsOf(limits.startTime);
  const std::string endDigits = digitsOf(limits.endTime);
  if (startDigits.empty() || endDigits.empty()) return RunTime::notLimited;
  const auto start = clockTimeOf(startDigits);
  const auto end = clockTimeOf(endDigits);
  if (!start || !end) return RunTime::invalid;
  if (*start == *end) return RunTime::sameTimes;
  return isInsideWindow(*start, *end, clockTime) ? RunTime::inside : RunTime::outside;
}

bool passesRunDayGate(Log& log, Clock& clock, const RunLimits& limits, std::optional<std::int64_t> patchDay) {
  const int today = clock.fields(clock.now(), Zone::local).weekday;
  const std::string day = weekdayName(today);
  const RunDay verdict = runDayVerdict(limits.day(today).allowed, patchDay == today);
  switch (verdict) {
    case RunDay::notLimited:
      log(fmt::format("No run day limitations were configured for today ({})", day));
      break;
    case RunDay::patchDayOverrides:
      log(fmt::format(
          "A run day limitation was set for today ({}), but today is also the configured patch day. The run "
          "day limitation will be ignored",
          day));
      break;
    case RunDay::limited:
      log(fmt::format("A run day limitation was set for today ({})", day));
      break;
  }
  return verdict != RunDay::limited;
}

bool passesRunTimeGate(Log& log, Clock& clock, const RunLimits& limits) {
  const Seconds now = clock.now();
  const CalendarFields fields = clock.fields(now, Zone::local);
  const std::string day = weekdayName(fields.weekday);
  const DayLimits today = limits.day(fields.weekday);
  log(fmt::format("Checking for any configured {} run time limitations...", day));
  const RunTime verdict = runTimeVerdict(today, fields.hour * 100 + fields.minute);
  switch (verdict) {
    case RunTime::notLimited:
      log(fmt::format("No run time limitations were found for {}", day));
      return true;
    case RunTime::invalid:
      log(
          fmt::format("Error: An invalid {} run time limitation was specified (start: {}, end: {}). Please speciy a "
                      "valid start and end time in 24 hour format, e.g., 09:00 for 9am or 21:00 for 9pm",
                      day, digitsOf(today.startTime), digitsOf(today.endTime)));
      return true;
    case RunTime::sameTimes:
      log(
          fmt::format("Warning: Run time limitations for {} were found, but the start and end times are the same. Run "
                      "time limitations will be ignored",
                      day));
      return true;
    case RunTime::inside:
    case RunTime::outside:
      break;
  }
  log(fmt::format("Found {} run time limitation (Start Time: {}, End Time: {})", day, *today.startTime,
                  *today.endTime));
  const std::string time = formatDate(clock, now, DateForm::clockTime);
  if (verdict == RunTime::inside) {
    log(fmt::format("The current time ({}) is within the allowed run time. Continuing...", time));
  } else {
    log(fmt::format("The current time ({}) is outside of the allowed run time", time));
  }
  return verdict == RunTime::inside;
}

}  // namespace vorlu
