#pragma once

#include <optional>
#include <string>
#include <variant>

namespace vorlu::simulator {

/// What the author of a test has the user do at one prompt.
struct Answer {
  int exitCode = 0;
  double wait = 0;  ///< Mac seconds before the answer
};

enum class NoAnswer {
  runOut,      ///< the file has no line left
  unreadable,  ///< a line that isn't "CODE [SECONDS]", or a file that can't be changed
};

/// Takes and removes the first line of the answers file, under a lock. Blank lines don't count.
std::variant<Answer, NoAnswer> takeAnswer(const std::string& path);

}  // namespace vorlu::simulator
