#pragma once

#include <string_view>

namespace vorlu {

/// Standard output of the command: what an administrator sees in the terminal or Jamf Pro in a policy's log.
class Console {
 public:
  virtual ~Console() = default;
  /// The text and a newline.
  virtual void print(std::string_view line) = 0;
  virtual void flush() = 0;
};

}  // namespace vorlu
