#include "vorlu/state/duplicates.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <string_view>
#include <tuple>

#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// Ages are whole seconds, and reading them takes a while.
constexpr Seconds startTolerance = 60;

using CommandLines = std::map<pid_t, std::string>;  ///< of candidates; empty for those found by name

/// Root's processes with the program of this agent or of its predecessor: others may bear its name.
bool isAgent(const ProcessRow& row) {
  static constexpr std::array<std::string_view, 4> programs = {"/usr/local/bin/vorlu", "vorlu",
                                                               "/usr/local/bin/moskupdate", "moskupdate"};
  return row.user == "root" && std::find(programs.begin(), programs.end(), row.program) != programs.end();
}

bool isSelfServiceLine(std::string_view line) {
  static constexpr std::array<std::string_view, 4> forms = {"/usr/local/bin/moskupdate -u selfService",
                                                            "/usr/local/bin/vorlu -u selfService",
                                                            "moskupdate -u selfService", "vorlu -u selfService"};
  const bool bracketed = line.starts_with('(') || line.starts_with('[');
  return !bracketed && line.find("sudo") == std::string_view::npos &&
         std::any_of(forms.begin(), forms.end(),
                     [line](std::string_view form) { return line.find(form) != std::string_view::npos; });
}

/// Adds what `pgrep` finds, the process that started this one to `above`; an error text when it couldn't search.
std::string searchByName(Vorlu& vorlu, CommandLines& found, std::vector<pid_t>& above) {
  Processes& processes = vorlu.platform.processes;
  Command search;
  search.program = "/usr/bin/pgrep";
  search.arguments = {"-x", "vorlu"};
  search.limit = std::chrono::seconds(60);
  const ProcessResult result = processes.run(search);
  if (!result.started) return result.error;
  // It answers 1 when nothing matched.
  if (result.timedOut || (result.status != 0 && result.status != 1))
    return fmt::format("{} ended with {}", search.program, result.status);
  std::string_view rest = result.output;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    pid_t pid = 0;
    const auto [stop, error] = std::from_chars(line.data(), line.data() + line.size(), pid);
    if (error != std::errc{} || pid == processes.ownPid()) continue;
    if (pid == processes.parentPid())
      above.push_back(pid);
    else
      found.try_emplace(pid);
  }
  return {};
}

std::string searchByCommandLine(Vorlu& vorlu, CommandLines& found) {
  const auto lines = readCommandLines(vorlu);
  if (!lines) return lines.error();
  for (const CommandLine& line : *lines)
    if (line.pid != vorlu.platform.processes.ownPid() && isSelfServiceLine(line.text)) found[line.pid] = line.text;
  return {};
}

/// Whether the first of two processes works before the second.
bool isBefore(std::int64_t age, pid_t pid, std::int64_t otherAge, pid_t otherPid) {
  return std::tuple(-age, pid) < std::tuple(-otherAge, otherPid);
}

/// Sorts the candidates that are agents; those that started this process go to `above`.
void arrange(Vorlu& vorlu, const ProcessTable& table, const CommandLines& candidates, Duplicates& result) {
  const pid_t own = vorlu.platform.processes.ownPid();
  const std::vector<pid_t> ownLine = table.lineOf(own);
  const ProcessRow* ownRow = table.find(own);
  result.ownAge = ownRow ? ownRow->age : static_cast<std::int64_t>(table.when - vorlu.startedAt);
  for (const auto& [pid, line] : candidates) {
    const ProcessRow* row = table.find(pid);
    if (row == nullptr || !isAgent(*row)) continue;
    if (std::find(ownLine.begin(), ownLine.end(), pid) != ownLine.end()) {
      result.above.push_back(pid);
      continue;
    }
    const bool ahead = isBefore(row->age, pid, result.ownAge, own);
    (ahead ? result.ahead : result.behind)
        .push_back({pid, row->age, table.when - static_cast<Seconds>(row->age), line});
  }
  for (auto* list : {&result.ahead, &result.behind})
    std::sort(list->begin(), list->end(),
              [](const Duplicate& a, const Duplicate& b) { return isBefore(a.age, a.pid, b.age, b.pid); });
}

Duplicates search(Vorlu& vorlu, bool alsoByCommandLine) {
  Duplicates result;
  CommandLines candidates;
  result.error = searchByName(vorlu, candidates, result.above);
  if (result.error.empty() && alsoByCommandLine) result.error = searchByCommandLine(vorlu, candidates);
  if (result.error.empty() && !candidates.empty()) {
    const auto table = readProcessTable(vorlu);
    if (table)
      arrange(vorlu, *table, candidates, result);
    else
      result.error = table.error();
  }
  result.searched = result.error.empty();
  return result;
}

}  // namespace

Duplicates findDuplicatesByName(Vorlu& vorlu) {
  return search(vorlu, false);
}

Duplicates findDuplicates(Vorlu& vorlu) {
  return search(vorlu, true);
}

bool isSameAgent(const ProcessTable& table, const ProcessRow& row, const Duplicate& agent) {
  return isAgent(row) && std::abs(table.when - static_cast<Seconds>(row.age) - agent.startedAt) <= startTolerance;
}

}  // namespace vorlu
