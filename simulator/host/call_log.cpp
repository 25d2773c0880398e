#include "simulator/host/call_log.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace vorlu::simulator {

namespace {

constexpr const char* logPath = "/private/var/log/tools.log";

bool isPlain(char c) {
  return isalnum(static_cast<unsigned char>(c)) != 0 || strchr("_@%+=:,./-", c) != nullptr;
}

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

std::string escaped(char c) {
  switch (c) {
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    case '\r':
      return "\\r";
    case '\\':
      return "\\\\";
    case '\'':
      return "\\'";
    default:
      return isControl(c) ? fmt::format("\\x{:02x}", static_cast<unsigned char>(c)) : std::string(1, c);
  }
}

// One write, so that lines of processes that call at once don't mix.
void appendLine(const std::string& line) {
  const int file = open(logPath, O_WRONLY | O_APPEND | O_CLOEXEC | O_NOFOLLOW);
  if (file < 0) return;
  [[maybe_unused]] const ssize_t written = write(file, line.data(), line.size());
  close(file);
}

}  // namespace

std::string shellWord(std::string_view word) {
  if (!word.empty() && std::all_of(word.begin(), word.end(), isPlain)) return std::string(word);
  std::string text;
  if (std::any_of(word.begin(), word.end(), isControl)) {
    for (const char c : word) text += escaped(c);
    return "$'" + text + "'";
  }
  for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return "'" + text + "'";
}

void logCall(std::string_view name, const std::vector<std::string>& arguments) {
  std::string line(name);
  for (const auto& argument : arguments) line += " " + shellWord(argument);
  appendLine(line + "\n");
}

void logNote(std::string_view name, std::string_view text) {
  appendLine(fmt::format("{}: {}\n", name, text));
}

}  // namespace vorlu::simulator
