#pragma once

#include <string>
#include <variant>
#include <vector>

namespace vorlu::simulator {

/// A quit event that a script sends.
struct QuitEvent {
  std::string application;
  double timeout = 120;      ///< seconds; without "with timeout" the system's two minutes
  std::size_t position = 0;  ///< of the word "quit" in the script, for error texts
};

struct ScriptError {
  std::size_t position = 0;
  std::string text;
};

/// Reads the part of AppleScript that quits applications: `set NAME to "TEXT"`, `tell application X … quit … end tell`,
/// `with timeout of N seconds … end timeout`, `tell application X to quit`. Anything else is a syntax error.
std::variant<std::vector<QuitEvent>, ScriptError> readScript(const std::string& script);

}  // namespace vorlu::simulator
