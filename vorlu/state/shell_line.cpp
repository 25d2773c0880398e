#include "vorlu/state/shell_line.h"

#include <algorithm>

namespace vorlu {
namespace {

bool isPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("._-+,:@%/").find(c) != std::string_view::npos;
}

std::string withBackslashes(std::string_view value, std::string_view special) {
  std::string quoted;
  for (const char c : value) {
    if (special.find(c) != std::string_view::npos) quoted += '\\';
    quoted += c;
  }
  return quoted;
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
  return withBackslashes(value, "\\\"$`");
}

std::string insideAppleScriptText(std::string_view value) {
  return withBackslashes(value, "\\\"");
}

std::string shellWord(std::string_view value) {
  if (!value.empty() && std::all_of(value.begin(), value.end(), isPlain)) return std::string(value);
  return "'" + insideSingleQuotes(value) + "'";
}

}  // namespace vorlu
