#include "vorlu/state/shell_line.h"

#include <algorithm>

namespace vorlu {
namespace {

bool isOneOf(char c, std::string_view set) {
  return set.find(c) != std::string_view::npos;
}

bool isPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || isOneOf(c, "._-+,:@%/");
}

}  // namespace

std::string insideSingleQuotes(std::string_view text) {
  std::string quoted;
  for (const char c : text) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  return quoted;
}

std::string insideDoubleQuotes(std::string_view value) {
  constexpr std::string_view special = "\\\"$`";
  std::string quoted;
  for (std::size_t at = 0; at < value.size(); ++at) {
    const char c = value[at];
    if (isOneOf(c, special) && value.substr(at, 2) != "\\n") quoted += '\\';
    quoted += c;
  }
  return quoted;
}

std::string insideAppleScriptText(std::string_view value) {
  std::string quoted;
  for (const char c : value) {
    if (isOneOf(c, "\\\"")) quoted += '\\';
    quoted += c;
  }
  return quoted;
}

std::string shellWord(std::string_view value) {
  if (!value.empty() && std::all_of(value.begin(), value.end(), isPlain)) return std::string(value);
  return "'" + insideSingleQuotes(value) + "'";
}

}  // namespace vorlu
