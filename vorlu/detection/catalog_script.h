#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlu {

struct Vorlu;

/// A catalog script made ready for its interpreter: one line of joined commands.
struct PreparedScript {
  std::string interpreter;
  std::string text;
};
PreparedScript prepareScript(std::string_view script);

/// Runs a catalog script to its end and gives its output (standard error included), trimmed. Nothing, with a logged
/// error, when it can't be started or was stopped after 30 minutes.
std::optional<std::string> scriptOutput(Vorlu& vorlu, const std::string& script);
/// The same, empty in place of nothing.
std::string runScriptForOutput(Vorlu& vorlu, const std::string& script);

/// `text` without blanks and line breaks at both ends.
std::string trimmed(std::string_view text);

}  // namespace vorlu
