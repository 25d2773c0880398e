#include "ctl/command.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace vorlu::ctl {

bool takeFlag(Arguments& arguments, std::string_view flag) {
  const auto found = std::ranges::find(arguments, flag);
  if (found == arguments.end()) return false;
  arguments.erase(found);
  return true;
}

std::optional<std::string> takeOption(Arguments& arguments, std::string_view option) {
  const auto found = std::ranges::find(arguments, option);
  if (found == arguments.end()) return std::nullopt;
  if (found + 1 == arguments.end()) throw std::invalid_argument(fmt::format("{} needs a value", option));
  std::string value = *(found + 1);
  arguments.erase(found, found + 2);
  return value;
}

}  // namespace vorlu::ctl
