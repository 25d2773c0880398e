#pragma once

#include <string_view>

namespace vorlu {

enum class CommandOption {
  help = 0,
  install = 1,
  installProgress = 2,
  installTest = 3,
  update = 4,
  updateTest = 5,
  check = 6,
  quit = 7,
  unknown = 8,
  version = 9,
  report = 10,
  initialise = 11,
  deleteKeys = 12,
};

/// The option of a token, which is the first argument without its first character. Letter case counts.
CommandOption optionForToken(std::string_view token);
/// The option of the first argument, whatever its first character is.
CommandOption optionForArgument(std::string_view argument);

}  // namespace vorlu
