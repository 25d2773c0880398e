#include "vorlu/state/process_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::size_t longestLine = 1000;  // parents: more than any real chain has

Command psCommand(std::vector<std::string> arguments) {
  Command command;
  command.program = "/bin/ps";
  command.arguments = std::move(arguments);
  command.mergeStandardError = false;
  command.limit = std::chrono::seconds(60);
  return command;
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r");
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(" \t\r") + 1 - start);
}

/// The next word of a line, which loses it.
std::string_view takeWord(std::string_view& line) {
  line = withoutBlanks(line);
  const std::string_view word = line.substr(0, line.find_first_of(" \t"));
  line.remove_prefix(word.size());
  return word;
}

/// A number without a sign that fills the whole text.
template <class T>
std::optional<T> number(std::string_view text) {
  T value{};
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = error == std::errc{} && stop == text.data() + text.size() && !text.empty() && text[0] != '-';
  return whole ? std::optional(value) : std::nullopt;
}

std::optional<ProcessRow> parseRow(std::string_view line) {
  const auto pid = number<pid_t>(takeWord(line));
  const auto parent = number<pid_t>(takeWord(line));
  const std::string_view user = takeWord(line);
  const auto age = parseElapsed(takeWord(line));
  const std::string_view program = withoutBlanks(line);
  if (!pid || !parent || !age || program.empty()) return std::nullopt;
  return ProcessRow{*pid, *parent, std::string(user), *age, std::string(program)};
}

/// Hands each line of what `ps` prints to `take`.
template <class Take>
Status readLines(Vorlu& vorlu, const Command& command, Take take) {
  const ProcessResult result = vorlu.platform.processes.run(command);
  if (!result.started) return Failure{result.error};
  if (result.timedOut || result.status != 0)
    return Failure{fmt::format("{} ended with {}", command.program, result.status)};
  std::string_view rest = result.output;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    take(line);
  }
  return success();
}

}  // namespace

const ProcessRow* ProcessTable::find(pid_t pid) const {
  const auto row = std::find_if(rows.begin(), rows.end(), [pid](const ProcessRow& other) { return other.pid == pid; });
  return row == rows.end() ? nullptr : &*row;
}

std::vector<pid_t> ProcessTable::lineOf(pid_t pid) const {
  std::vector<pid_t> line{pid};
  while (line.size() < longestLine) {
    const ProcessRow* row = find(line.back());
    if (row == nullptr || row->parent <= 1 || row->parent == row->pid) break;
    line.push_back(row->parent);
  }
  return line;
}

bool ProcessTable::descends(pid_t pid, pid_t ancestor) const {
  const std::vector<pid_t> line = lineOf(pid);
  return std::find(line.begin() + 1, line.end(), ancestor) != line.end();
}

Result<ProcessTable> readProcessTable(Vorlu& vorlu) {
  ProcessTable table;
  // The program comes last, since it alone may hold blanks and is cut off elsewhere.
  const Status read =
      readLines(vorlu, psCommand({"-Aww", "-o", "pid=", "-o", "ppid=", "-o", "user=", "-o", "etime=", "-o", "comm="}),
                [&table](std::string_view line) {
                  if (auto row = parseRow(line)) table.rows.push_back(std::move(*row));
                });
  if (!read) return read.failure();
  table.when = vorlu.platform.clock.now();
  return table;
}

Result<std::vector<CommandLine>> readCommandLines(Vorlu& vorlu) {
  std::vector<CommandLine> lines;
  const Status read =
      readLines(vorlu, psCommand({"-Aww", "-o", "pid=", "-o", "command="}), [&lines](std::string_view line) {
        const auto pid = number<pid_t>(takeWord(line));
        if (pid) lines.push_back({*pid, std::string(withoutBlanks(line))});
      });
  if (!read) return read.failure();
  return lines;
}

std::optional<std::int64_t> processAge(Vorlu& vorlu, pid_t pid) {
  const ProcessResult result = vorlu.platform.processes.run(psCommand({"-o", "etime=", "-p", std::to_string(pid)}));
  return parseElapsed(withoutBlanks(std::string_view(result.output).substr(0, result.output.find('\n'))));
}

std::optional<std::int64_t> parseElapsed(std::string_view text) {
  std::int64_t days = 0;
  if (const std::size_t dash = text.find('-'); dash != std::string_view::npos) {
    const auto parsed = number<std::int32_t>(text.substr(0, dash));
    if (!parsed) return std::nullopt;
    days = *parsed;
    text.remove_prefix(dash + 1);
  }
  std::int64_t seconds = 0;
  int parts = 0;
  for (bool more = true; more; ++parts) {
    const std::size_t colon = text.find(':');
    const auto part = number<std::int32_t>(text.substr(0, colon));
    if (!part || (parts > 0 && *part > 59) || parts > 2) return std::nullopt;
    seconds = seconds * 60 + *part;
    more = colon != std::string_view::npos;
    if (more) text.remove_prefix(colon + 1);
  }
  if (parts < 2 || (days > 0 && parts != 3)) return std::nullopt;
  return days * 86400 + seconds;
}

}  // namespace vorlu
