#include "ctl/lint/script_faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "vorlu/install/install_script.h"

namespace vorlu::ctl {
namespace {

constexpr const char* const joining = "lines are joined with semicolons before the script runs";

struct Line {
  std::size_t number = 0;
  std::string text;  ///< without blanks at both ends
  bool dropped = false;
};

/// The lines that hold something.
std::vector<Line> linesOf(std::string_view script) {
  std::vector<Line> lines;
  for (std::size_t number = 1; !script.empty(); ++number) {
    const std::string_view line = script.substr(0, script.find('\n'));
    script.remove_prefix(std::min(script.size(), line.size() + 1));
    std::string text = trimmed(line);
    const bool dropped = prepareScript(text).text.empty();
    if (!text.empty()) lines.push_back({number, std::move(text), dropped});
  }
  return lines;
}

std::string quoted(const Line& line) {
  constexpr std::size_t shown = 60;
  return fmt::format("line {} (\"{}{}\")", line.number, line.text.substr(0, shown),
                     line.text.size() > shown ? "…" : "");
}

bool isWordPart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
         c == '.' || c == '/';
}

/// What a shell sees at the end of a line: whether a quote is open, and where a comment or a here-document began.
struct ShellScan {
  char openQuote = 0;
  bool comment = false;
  bool hereDocument = false;
};

ShellScan scan(std::string_view line, char openQuote) {
  ShellScan found{.openQuote = openQuote};
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    if (found.openQuote != 0) {
      if (c == '\\' && found.openQuote == '"')
        ++at;
      else if (c == found.openQuote)
        found.openQuote = 0;
    } else if (c == '\\') {
      ++at;
    } else if (c == '\'' || c == '"') {
      found.openQuote = c;
    } else if (c == '#' && (at == 0 || std::string_view(" \t;&|").find(line[at - 1]) != std::string_view::npos)) {
      found.comment = true;
      break;
    } else if (line.substr(at).starts_with("<<<")) {
      at += 2;
    } else if (line.substr(at).starts_with("<<") && at + 2 < line.size()) {
      const char next = line[at + 2];
      // In arithmetic "1 << 2" is a shift.
      if (next == '-' || next == '\'' || next == '"' || (next >= 'A' && next <= 'Z') || next == '_')
        found.hereDocument = true;
    }
  }
  return found;
}

bool endsWithBackslash(std::string_view line) {
  const std::size_t last = line.find_last_not_of('\\');
  const std::size_t count = line.size() - (last == std::string_view::npos ? 0 : last + 1);
  return count % 2 == 1;
}

/// The word "then", "else" or "do" that ends another word before a semicolon, and whose semicolon is taken away.
std::optional<std::string_view> mistakenKeyword(std::string_view line) {
  for (const std::string_view word : {"then;", "else;", "do;"}) {
    for (std::size_t at = line.find(word); at != std::string_view::npos; at = line.find(word, at + 1))
      if (at > 0 && isWordPart(line[at - 1])) return word.substr(0, word.size() - 1);
  }
  return std::nullopt;
}

/// Collects the faults of one script.
class ScriptReview {
 public:
  ScriptReview(std::string_view script, ScriptUse use) : use_(use), lines_(linesOf(script)) {}

  std::vector<ScriptFault> faults() {
    const bool empty = std::ranges::all_of(lines_, &Line::dropped);
    if (empty) {
      error("nothing of this script is left once shebangs and lines with \"exit 0\" or \"exit 1\" are dropped",
            "write what it is to do, or remove the key");
      return std::move(faults_);
    }
    reviewInterpreter();
    for (const Line& line : lines_) line.dropped ? reviewDropped(line) : reviewKept(line);
    return std::move(faults_);
  }

 private:
  void error(std::string problem, std::string advice) {
    faults_.push_back({Severity::error, std::move(problem), std::move(advice)});
  }
  void warning(std::string problem, std::string advice) {
    faults_.push_back({Severity::warning, std::move(problem), std::move(advice)});
  }

  bool isLastKept(const Line& line) const {
    return std::none_of(lines_.begin(), lines_.end(),
                        [&](const Line& other) { return other.number > line.number && !other.dropped; });
  }

  void reviewInterpreter() {
    const Line& first = lines_.front();
    if (!first.text.starts_with("#!")) return;
    const std::string_view path = std::string_view(first.text).substr(2, first.text.find(' ') - 2);
    constexpr std::array known = {"/bin/bash", "/bin/sh", "/bin/zsh"};
    if (std::ranges::find(known, path) == known.end() && first.dropped)
      warning(fmt::format("the script asks for {}, but is run by /bin/zsh", path),
              "write it for #!/bin/bash, #!/bin/sh or #!/bin/zsh");
  }

  void reviewDropped(const Line& line) {
    if (line.text.find("#!/bin/") != std::string::npos) {
      if (line.number != lines_.front().number)
        warning(fmt::format("{} is dropped, because it holds \"#!/bin/\"", quoted(line)),
                "keep the shebang on the first line alone");
      return;
    }
    const std::string_view bare = std::string_view(line.text).substr(0, line.text.find_last_not_of("; \t") + 1);
    if (bare != "exit 0" && bare != "exit 1")
      return error(fmt::format("{} is dropped, because it holds \"exit 0\" or \"exit 1\"", quoted(line)),
                   "put what else it does on a line of its own, without an exit");
    if (!isLastKept(line))
      warning(fmt::format("{} is dropped, and the script goes on behind it", quoted(line)),
              "use if and else instead of an early exit");
  }

  void reviewKept(const Line& line) {
    const bool last = isLastKept(line);
    const char quoteBefore = openQuote_;
    const ShellScan seen = scan(line.text, quoteBefore);
    openQuote_ = seen.openQuote;
    if (last) return;
    if (line.text.starts_with("#!"))
      return error(
          fmt::format("{} isn't an interpreter that scripts are run by, and all that follows becomes a comment",
                      quoted(line)),
          "write the script for #!/bin/zsh, #!/bin/bash or #!/bin/sh");
    if (seen.comment)
      return error(fmt::format("{} has a comment, and with it all that follows becomes one: {}", quoted(line), joining),
                   "remove the comment");
    if (seen.openQuote != 0) {
      if (quoteBefore == 0)
        error(fmt::format("{} opens a quotation that goes on in the next line, and its line break becomes a semicolon",
                          quoted(line)),
              "keep a quoted text on one line, for example with printf and \\n");
      return;
    }
    if (seen.hereDocument)
      return error(fmt::format("{} begins a here-document, which has no lines any more: {}", quoted(line), joining),
                   "print the text with printf or echo");
    reviewEnd(line);
  }

  void reviewEnd(const Line& line) {
    const std::string& text = line.text;
    if (endsWithBackslash(text))
      return error(
          fmt::format("{} goes on in the next line, but a semicolon follows its backslash: {}", quoted(line), joining),
          "write the command on one line");
    if (text.ends_with('|') || text.ends_with("&&"))
      return error(fmt::format("{} ends with an operator, and a semicolon follows it: {}", quoted(line), joining),
                   "write the command on one line");
    const bool repaired = use_ == ScriptUse::install;
    if (text.ends_with(';') && !repaired && !text.ends_with(";;"))
      return error(fmt::format("{} ends with a semicolon, and a second one follows it: {}", quoted(line), joining),
                   "remove the semicolon at the end of the line");
    if (const auto word = mistakenKeyword(text + ";"))
      error(fmt::format("{} has a word that ends in \"{}\", and the semicolon behind it is taken away", quoted(line),
                        *word),
            "put the word in quotes, or something else behind it");
  }

  ScriptUse use_;
  std::vector<Line> lines_;
  std::vector<ScriptFault> faults_;
  char openQuote_ = 0;
};

PreparedScript prepared(std::string_view script, ScriptUse use) {
  return use == ScriptUse::install ? prepareInstallScript(script) : prepareScript(script);
}

}  // namespace

std::vector<ScriptFault> scriptFaults(std::string_view script, ScriptUse use, const SyntaxCheck& syntax) {
  std::vector<ScriptFault> faults = ScriptReview(script, use).faults();
  const bool broken = std::ranges::any_of(faults, [](const ScriptFault& f) { return f.severity == Severity::error; });
  if (broken) return faults;
  const PreparedScript joined = prepared(script, use);
  const auto said = syntax(joined);
  if (!said) return faults;
  const bool brokenByJoining = !syntax({joined.interpreter, std::string(script)});
  faults.push_back(
      {Severity::error,
       brokenByJoining
           ? fmt::format("{} can't read this script once its lines are joined: {}", joined.interpreter, *said)
           : fmt::format("{} can't read this script: {}", joined.interpreter, *said),
       brokenByJoining
           ? "let what a semicolon can't follow, such as \"in\", \"{\" or \"&\", share its line with what comes next"
           : "mend the script"});
  return faults;
}

}  // namespace vorlu::ctl
