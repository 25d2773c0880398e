#pragma once

#include <sys/types.h>

#include <string>

namespace vorlu {

/// Stands for SCDynamicStoreCopyConsoleUser.
class ConsoleUser {
 public:
  virtual ~ConsoleUser() = default;
  /// Login name of the user at the console, "Unknown" without one.
  virtual std::string name() = 0;
  virtual uid_t uid() = 0;
};

}  // namespace vorlu
