#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vorlu/platform/clock.h"

namespace vorlu {

/// The date texts of logs, run data and prompts.
enum class DateForm {
  weekday,      ///< "EEEEEEE"
  fullStamp,    ///< "MMM dd YYYY HH:mm:ss Z"; "YYYY" is the week-based year
  compactTime,  ///< "HHmm"
  clockTime,    ///< "HH:mm"
  longDate,     ///< "EEEEEEE dd MMM YYYY HH:mm:ss"
  logLine,      ///< "EEEEEEE MMM dd HH:mm:ss"
};

/// In the Mac's own zone, locale "en_US_POSIX", capitalised word by word.
std::string formatDate(Clock& clock, Seconds when, DateForm form);

/// A moment in UTC as messages show it: "2026-03-02 12:00:00 +0000".
std::string describeDate(std::int64_t secondsSinceEpoch);

/// Each word's first letter upper case, the rest lower case.
std::string capitalised(std::string_view text);

}  // namespace vorlu
