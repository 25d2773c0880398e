#include <fmt/format.h>

#include <cstdlib>

#include "simulator/host/host_clock.h"
#include "simulator/tools/tool.h"

namespace vorlu::simulator {

int runSleep(const Arguments& arguments) {
  double seconds = 0;
  for (const auto& argument : arguments) {
    char* end = nullptr;
    seconds += std::strtod(argument.c_str(), &end);
    if (end == argument.c_str() || *end != '\0' || seconds < 0) {
      fmt::print(stderr, "sleep: invalid time interval: {}\n", argument);
      return 1;
    }
  }
  if (arguments.empty()) {
    fmt::print(stderr, "usage: sleep number ...\n");
    return 1;
  }
  macSleep(seconds);
  return 0;
}

}  // namespace vorlu::simulator
