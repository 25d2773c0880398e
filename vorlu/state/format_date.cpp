#include "vorlu/state/format_date.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <chrono>

namespace vorlu {
namespace {

std::string_view pattern(DateForm form) {
  switch (form) {
    case DateForm::weekday:
      return "EEEEEEE";
    case DateForm::fullStamp:
      return "MMM dd YYYY HH:mm:ss Z";
    case DateForm::compactTime:
      return "HHmm";
    case DateForm::clockTime:
      return "HH:mm";
    case DateForm::longDate:
      return "EEEEEEE dd MMM YYYY HH:mm:ss";
    case DateForm::logLine:
      break;
  }
  return "EEEEEEE MMM dd HH:mm:ss";
}

}  // namespace

std::string capitalised(std::string_view text) {
  std::string result(text);
  bool inWord = false;
  for (char& c : result) {
    const auto byte = static_cast<unsigned char>(c);
    c = static_cast<char>(inWord ? std::tolower(byte) : std::toupper(byte));
    inWord = std::isspace(byte) == 0;
  }
  return result;
}

std::string formatDate(Clock& clock, Seconds when, DateForm form) {
  return capitalised(clock.format(when, pattern(form)));
}

std::string describeDate(std::int64_t secondsSinceEpoch) {
  constexpr std::int64_t farAway = 900'000'000'000;  // about 28,500 years, as far as calendars reach
  const std::chrono::sys_seconds moment{std::chrono::seconds(std::clamp(secondsSinceEpoch, -farAway, farAway))};
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(moment - day);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02} +0000", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), time.hours().count(),
                     time.minutes().count(), time.seconds().count());
}

}  // namespace vorlu
