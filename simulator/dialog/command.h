#pragma once

#include <string>

namespace vorlu::simulator {

/// One line of the command file: "progresstext: Installing Slides...".
struct Command {
  enum class Kind { unknown, progress, progressText, title, message, icon, listItem, quit };
  Kind kind = Kind::unknown;
  std::string value;  ///< behind the colon, without the blank that follows it
};

Command parseCommand(const std::string& line);

}  // namespace vorlu::simulator
