#include "ctl/command.h"

#include <algorithm>

namespace vorlu::ctl {

bool takeFlag(Arguments& arguments, std::string_view flag) {
  const auto found = std::ranges::find(arguments, flag);
  if (found == arguments.end()) return false;
  arguments.erase(found);
  return true;
}

}  // namespace vorlu::ctl
