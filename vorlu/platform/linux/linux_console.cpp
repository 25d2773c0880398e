#include "vorlu/platform/linux/linux_console.h"

#include <unistd.h>

#include <string>

#include "vorlu/platform/linux/descriptor.h"

namespace vorlu {

void LinuxConsole::print(std::string_view line) {
  // A reader that has gone must not end the run.
  static_cast<void>(writeAll(STDOUT_FILENO, std::string(line) + "\n"));
}

}  // namespace vorlu
