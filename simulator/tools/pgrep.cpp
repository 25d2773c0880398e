#include <fmt/format.h>
#include <regex.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "simulator/tools/process_table.h"
#include "simulator/tools/tool.h"

namespace vorlu::simulator {

namespace {

enum Status { matched = 0, noMatch = 1, usageError = 2 };

struct Question {
  bool withAncestors = false;  // -a
  bool wholeLine = false;      // -f
  bool ignoreCase = false;     // -i
  bool longOutput = false;     // -l
  bool exact = false;          // -x
  std::string pattern;
};

std::optional<Question> parse(const Arguments& arguments) {
  Question question;
  std::size_t next = 0;
  for (; next < arguments.size() && arguments[next].size() > 1 && arguments[next][0] == '-'; ++next) {
    for (const char flag : arguments[next].substr(1)) {
      switch (flag) {
        case 'a':
          question.withAncestors = true;
          break;
        case 'f':
          question.wholeLine = true;
          break;
        case 'i':
          question.ignoreCase = true;
          break;
        case 'l':
          question.longOutput = true;
          break;
        case 'x':
          question.exact = true;
          break;
        default:
          return std::nullopt;
      }
    }
  }
  if (next + 1 != arguments.size()) return std::nullopt;
  question.pattern = arguments[next];
  return question;
}

// This pgrep and the processes that started it, which a Mac leaves out.
std::vector<pid_t> ownLine() {
  std::vector<pid_t> line{getpid()};
  while (line.back() > 1) {
    const auto process = findProcess(line.back());
    if (!process) break;
    line.push_back(process->parent);
  }
  return line;
}

bool matches(const regex_t& pattern, bool exact, const std::string& text) {
  regmatch_t found{};
  if (regexec(&pattern, text.c_str(), 1, &found, 0) != 0) return false;
  return !exact || (found.rm_so == 0 && found.rm_eo == static_cast<regoff_t>(text.size()));
}

}  // namespace

int runPgrep(const Arguments& arguments) {
  const auto question = parse(arguments);
  if (!question) {
    fmt::print(stderr, "usage: pgrep [-afilx] pattern\n");
    return usageError;
  }
  regex_t pattern{};
  if (regcomp(&pattern, question->pattern.c_str(), REG_EXTENDED | (question->ignoreCase ? REG_ICASE : 0)) != 0) {
    fmt::print(stderr, "pgrep: Cannot compile regular expression `{}'\n", question->pattern);
    return usageError;
  }
  std::vector<pid_t> leftOut = ownLine();
  if (question->withAncestors) leftOut.resize(1);
  int status = noMatch;
  for (const auto& process : allProcesses()) {
    if (std::find(leftOut.begin(), leftOut.end(), process.pid) != leftOut.end()) continue;
    const std::string line = question->wholeLine ? commandLine(process) : process.name;
    if (!matches(pattern, question->exact, line)) continue;
    status = matched;
    fmt::print("{}{}\n", process.pid, question->longOutput ? " " + line : "");
  }
  regfree(&pattern);
  return status;
}

}  // namespace vorlu::simulator
