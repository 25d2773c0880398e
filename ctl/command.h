#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlu::ctl {

using Arguments = std::vector<std::string>;

/// What a command answers: the text for standard output, or for standard error where the status is 2.
struct Answer {
  int status = 0;  ///< 0 fine, 1 errors found, 2 the command itself couldn't be carried out
  std::string text;
};

/// One verb of `vorluctl`.
struct Command {
  std::string_view name;
  std::string_view usage;  ///< its arguments, as the usage text shows them
  Answer (*run)(const Arguments& arguments);
};

/// Takes `flag` out of the arguments; tells whether it was there.
bool takeFlag(Arguments& arguments, std::string_view flag);

/// Takes `option` and the word behind it out of the arguments; nothing when it wasn't there. Throws when the word is
/// missing.
std::optional<std::string> takeOption(Arguments& arguments, std::string_view option);

}  // namespace vorlu::ctl
