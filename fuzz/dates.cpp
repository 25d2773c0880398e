#include <fmt/format.h>

#include <bit>
#include <cmath>
#include <regex>
#include <stdexcept>

#include "fuzz/agent.h"
#include "fuzz/target.h"
#include "vorlu/policy/frequency_calculation.h"
#include "vorlu/policy/run_limits.h"
#include "vorlu/server/catalog_window.h"
#include "vorlu/state/format_date.h"
#include "vorlu/state/process_table.h"

namespace vorlu::fuzz {
namespace {

void checkDay(IcuCalendar& calendar, Seconds when) {
  for (const Zone zone : {Zone::local, Zone::london}) {
    const CalendarFields day = calendar.fields(when, zone);
    expect(day.month >= 1 && day.month <= 12 && day.day >= 1 && day.day <= 31 && day.hour >= 0 && day.hour <= 23 &&
               day.minute >= 0 && day.minute <= 59 && day.second >= 0 && day.second <= 59 && day.weekday >= 1 &&
               day.weekday <= 7,
           "a date that a calendar shows", std::to_string(when));
    const auto start = calendar.hourOfDay(when, 0, zone);
    const auto end = calendar.hourOfDay(when, 24, zone);
    if (!start || !end || std::abs(when) > 6e10) continue;  // beyond lie years before Christ
    expect(*start <= when && when < *end, "a moment lies in its day", std::to_string(when), std::to_string(*start));
    expect(*end - *start >= 22 * 3600 && *end - *start <= 26 * 3600, "a day is a day long", std::to_string(when));
  }
}

void checkWindow(StandingClock& clock, std::int64_t stamp) {
  const int hour = clock.fields(clock.moment, Zone::london).hour;
  if (const auto window = catalogWindowAt(hour)) {
    expect(window->startHour <= hour && hour < window->endHour, "the window of an hour holds it");
    const bool inside = isTimestampInWindow(clock, stamp, window->startHour, window->endHour, clock.moment);
    expect(!inside || std::abs(static_cast<double>(stamp) - clock.moment) < 16 * 3600, "a window is part of a day",
           std::to_string(stamp), std::to_string(clock.moment));
  }
}

void checkLimits(const std::string& start, const std::string& end, int clockTime) {
  const RunTime verdict = runTimeVerdict({true, start, end}, clockTime);
  const RunTime turned = runTimeVerdict({true, end, start}, clockTime);
  expect((verdict == RunTime::invalid) == (turned == RunTime::invalid), "both ends are read alike", start, end);
  expect((verdict == RunTime::sameTimes) == (turned == RunTime::sameTimes), "both ends are read alike", start, end);
}

void checkElapsed(const std::string& text) {
  const auto seconds = parseElapsed(text);
  if (!seconds) return;
  expect(*seconds >= 0, "an age isn't negative", text);
  const std::int64_t rest = *seconds % 86400;
  const std::string shown =
      fmt::format("{}-{:02}:{:02}:{:02}", *seconds / 86400, rest / 3600, rest / 60 % 60, rest % 60);
  if (*seconds / 86400 < 2'000'000'000)
    expect(parseElapsed(shown) == seconds, "an age reads as it is shown", text, shown);
}

}  // namespace

/// Two moments, an hour, and texts of times.
FUZZ_TARGET(dates) {
  Input in(input);
  static IcuCalendar calendar("America/New_York");
  static StandingClock clock;
  const std::int64_t moment = in.integer();
  const std::int64_t stamp = in.integer();
  const auto when = static_cast<Seconds>(moment % 1'000'000'000'000);
  checkDay(calendar, when);
  const auto anyTime = std::bit_cast<double>(stamp);
  if (!std::isnan(anyTime)) checkDay(calendar, anyTime);
  clock.moment = when;
  checkWindow(clock, stamp);
  for (const DateForm form : {DateForm::weekday, DateForm::fullStamp, DateForm::compactTime, DateForm::clockTime,
                              DateForm::longDate, DateForm::logLine})
    expect(!formatDate(clock, when, form).empty(), "every moment has a text", std::to_string(when));
  expect(describeDate(stamp).ends_with(" +0000"), "every moment can be described", std::to_string(stamp));
  const FrequencyCalculation frequency(clock);
  expect(frequency.startOfTodayTime() <= frequency.now(), "the day began before now");
  const std::int64_t patchDay = in.byte() % 8;
  const std::int64_t last = frequency.lastPatchDayStartTime(patchDay);
  if (patchDay >= 1 && patchDay <= 7 && patchDay != frequency.today())
    expect(last < frequency.startOfTodayTime() && frequency.startOfTodayTime() - last <= 7 * 86400,
           "the last patch day lies in the week before", std::to_string(when), std::to_string(last));
  const int clockTime = in.byte() % 24 * 100 + in.byte() % 60;
  const std::string start = in.text();
  checkLimits(start, in.text(), clockTime);
  checkElapsed(start);
}

/// An ICU date pattern either makes a text or is refused.
FUZZ_TARGET(date_pattern) {
  IcuCalendar calendar("UTC");
  try {
    calendar.format(1772452800, input);
  } catch (const std::runtime_error& refused) {
    expect(std::string_view(refused.what()).starts_with("Calendar: "), "a refusal tells why", input, refused.what());
  }
}

}  // namespace vorlu::fuzz
