#include "vorlu/prompts/minutes_text.h"

#include <fmt/format.h>

namespace vorlu {
namespace {

std::string counted(std::int64_t count, const char* unit) {
  return fmt::format("{} {}{}", count, unit, count == 1 ? "" : "s");
}

}  // namespace

std::string formatMinutes(std::int64_t minutes) {
  const std::int64_t hours = minutes / 60;
  const std::int64_t rest = minutes % 60;
  if (hours == 0) return counted(rest, "minute");
  if (rest == 0) return counted(hours, "hour");
  return counted(hours, "hour") + " and " + counted(rest, "minute");
}

}  // namespace vorlu
