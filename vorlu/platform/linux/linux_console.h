#pragma once

#include "vorlu/platform/console.h"

namespace vorlu {

/// Standard output, one write a line: nothing waits in a buffer when the process is ended by a signal.
class LinuxConsole : public Console {
 public:
  void print(std::string_view line) override;
  void flush() override {}
};

}  // namespace vorlu
