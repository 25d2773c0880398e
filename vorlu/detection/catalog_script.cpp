#include "vorlu/detection/catalog_script.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>

#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::string_view;

bool contains(string_view text, string_view part) {
  return text.find(part) != string_view::npos;
}

bool startsWithAny(string_view text, std::initializer_list<string_view> marks) {
  return std::any_of(marks.begin(), marks.end(), [text](string_view mark) { return text.starts_with(mark); });
}

/// Bytes of the line break with which `text` begins, 0 if it begins with none.
std::size_t lineBreakLength(string_view text) {
  if (startsWithAny(text, {"\n", "\r", "\v", "\f"})) return 1;
  if (text.starts_with("\xc2\x85")) return 2;                            // U+0085
  return startsWithAny(text, {"\xe2\x80\xa8", "\xe2\x80\xa9"}) ? 3 : 0;  // U+2028, U+2029
}

/// Bytes of the blank or line break with which `text` begins, 0 if it begins with none.
std::size_t whiteSpaceLength(string_view text) {
  if (startsWithAny(text, {" ", "\t"})) return 1;
  if (text.starts_with("\xc2\xa0")) return 2;                                                           // U+00A0
  if (startsWithAny(text, {"\xe1\x9a\x80", "\xe2\x80\xaf", "\xe2\x81\x9f", "\xe3\x80\x80"})) return 3;  // U+3000 etc.
  if (text.size() < 3 || !text.starts_with("\xe2\x80")) return lineBreakLength(text);
  const auto last = static_cast<unsigned char>(text[2]);
  return last >= 0x80 && last <= 0x8a ? 3 : lineBreakLength(text);  // U+2000 to U+200A
}

std::size_t trailingWhiteSpaceLength(string_view text) {
  for (std::size_t length = 1; length <= 3 && length <= text.size(); ++length) {
    if (whiteSpaceLength(text.substr(text.size() - length)) == length) return length;
  }
  return 0;
}

std::string interpreterOf(string_view script) {
  if (contains(script, "#!/bin/bash")) return "/bin/bash";
  if (contains(script, "#!/bin/sh")) return "/bin/sh";
  return "/bin/zsh";
}

/// Shebangs mean nothing after a join, an early exit would cut the joined line, and nothing but blanks between two
/// semicolons is an error to bash and sh.
bool isDropped(string_view line) {
  return trimmed(line).empty() || contains(line, "#!/bin/") || contains(line, "exit 0") || contains(line, "exit 1");
}

std::string joinedLines(string_view script) {
  std::string joined;
  const auto take = [&joined](string_view line) {
    if (isDropped(line)) return;
    if (!joined.empty()) joined += ';';
    joined.append(line);
  };
  std::size_t lineStart = 0;
  std::size_t at = 0;
  while (at < script.size()) {
    const std::size_t lineBreak = lineBreakLength(script.substr(at));
    if (lineBreak == 0) {
      ++at;
      continue;
    }
    take(script.substr(lineStart, at - lineStart));
    at += lineBreak;
    lineStart = at;
  }
  take(script.substr(lineStart));
  return joined;
}

}  // namespace

PreparedScript prepareScript(string_view script) {
  std::string text = joinedLines(script);
  for (const string_view word : {"then", "else", "do"}) {
    text = replacedAll(text, fmt::format("{};", word), fmt::format("{} ", word));
  }
  return {interpreterOf(script), std::move(text)};
}

std::optional<std::string> scriptOutput(Vorlu& vorlu, const std::string& script) {
  PreparedScript prepared = prepareScript(script);
  Command command;
  command.program = std::move(prepared.interpreter);
  command.arguments = {"-c", std::move(prepared.text)};
  const ProcessResult result = vorlu.platform.processes.run(command);
  if (!result.started) {
    vorlu.log(fmt::format("Error: A catalog script could not be started with {} - {}", command.program, result.error));
    return std::nullopt;
  }
  if (result.timedOut) {
    vorlu.log(fmt::format("Error: A catalog script was stopped because it ran longer than {} seconds",
                          command.limit.count()));
    return std::nullopt;
  }
  return trimmed(result.output);
}

std::string runScriptForOutput(Vorlu& vorlu, const std::string& script) {
  return scriptOutput(vorlu, script).value_or("");
}

std::string trimmed(string_view text) {
  while (const std::size_t length = whiteSpaceLength(text)) text.remove_prefix(length);
  while (const std::size_t length = trailingWhiteSpaceLength(text)) text.remove_suffix(length);
  return std::string(text);
}

}  // namespace vorlu
