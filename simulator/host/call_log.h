#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorlu::simulator {

/// One word of a shell line: plain when it is harmless, otherwise quoted, with control characters as $'\n'.
std::string shellWord(std::string_view word);

/// Appends "{name} {arguments…}" as one line to /private/var/log/tools.log. A Mac without that file, or a caller who
/// may not write it, logs nothing.
void logCall(std::string_view name, const std::vector<std::string>& arguments);

/// Appends "{name}: {text}": something that a test's author should know.
void logNote(std::string_view name, std::string_view text);

}  // namespace vorlu::simulator
