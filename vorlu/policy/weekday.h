#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace vorlu {

/// English name of a calendar's weekday, 1 Sunday to 7 Saturday; empty for any other number.
inline std::string weekdayName(std::int64_t number) {
  static constexpr std::array names = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  return number >= 1 && number <= 7 ? names[static_cast<std::size_t>(number - 1)] : "";
}

}  // namespace vorlu
