#pragma once

#include <string>
#include <string_view>

namespace vorlu {

/// A value as one word of a shell line: as it is when no shell would change it, else in single quotes.
std::string shellWord(std::string_view value);

/// A value for a place inside double quotes of a shell line. The two characters `\n`, which mean nothing to a shell,
/// stay as they are.
std::string insideDoubleQuotes(std::string_view value);

/// A value for a place inside a quoted text of AppleScript.
std::string insideAppleScriptText(std::string_view value);

/// A text for a place inside single quotes of a shell line.
std::string insideSingleQuotes(std::string_view text);

}  // namespace vorlu
