#pragma once

#include <string>
#include <vector>

namespace vorlu::simulator {

/// The file that a running prompt is told things through. Lines from before the prompt started aren't for it.
class CommandFile {
 public:
  explicit CommandFile(std::string path);

  /// Complete lines that have come since the last call. A file that was made anew is read from its start.
  std::vector<std::string> newLines();

 private:
  std::string path_;
  unsigned long inode_ = 0;
  long offset_ = 0;
};

}  // namespace vorlu::simulator
