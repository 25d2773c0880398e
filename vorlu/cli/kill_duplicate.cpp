#include "vorlu/cli/kill_duplicate.h"

#include <fmt/format.h>
#include <signal.h>

#include <chrono>

#include "vorlu/state/dialog_command.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

/// An agent that is replacing an app ends only after that.
constexpr int secondsToEnd = 60;

/// The agent's row, if the process is still the one that was found.
const ProcessRow* findAgain(const Result<ProcessTable>& table, const Duplicate& agent) {
  const ProcessRow* row = table ? table->find(agent.pid) : nullptr;
  return row && isSameAgent(*table, *row, agent) ? row : nullptr;
}

/// Programs that `agent` started to show prompts.
std::vector<pid_t> dialogsOf(const ProcessTable& table, pid_t agent) {
  std::vector<pid_t> dialogs;
  for (const ProcessRow& row : table.rows) {
    const bool isDialog = row.program.substr(row.program.rfind('/') + 1) == "Dialog";
    if (isDialog && table.descends(row.pid, agent)) dialogs.push_back(row.pid);
  }
  return dialogs;
}

bool hasEnded(Vorlu& vorlu, pid_t pid) {
  Processes& processes = vorlu.platform.processes;
  for (int second = 0; second < secondsToEnd && processes.isAlive(pid); ++second)
    vorlu.platform.clock.sleep(seconds(1));
  return !processes.isAlive(pid);
}

bool endAgent(Vorlu& vorlu, const Duplicate& agent) {
  Processes& processes = vorlu.platform.processes;
  const auto table = readProcessTable(vorlu);
  if (!table) {
    vorlu.log(fmt::format("Error: Could not look at the Vorlu process {} - {}", agent.pid, table.error()));
    return false;
  }
  if (findAgain(table, agent) == nullptr) return true;
  const std::vector<pid_t> dialogs = dialogsOf(*table, agent.pid);
  processes.signal(agent.pid, SIGTERM);
  for (const pid_t dialog : dialogs) processes.signal(dialog, SIGTERM);
  if (hasEnded(vorlu, agent.pid)) return true;

  if (findAgain(readProcessTable(vorlu), agent) == nullptr) return true;
  vorlu.log(fmt::format("The Vorlu process {} did not end and is stopped by force", agent.pid), silent);
  processes.signal(agent.pid, SIGKILL);
  return hasEnded(vorlu, agent.pid);
}

}  // namespace

bool killDuplicate(Vorlu& vorlu, const Duplicate& agent) {
  writeDialogCommand(vorlu, "quit:");
  vorlu.platform.clock.sleep(seconds(1));
  return endAgent(vorlu, agent);
}

bool killHungInstall(Vorlu& vorlu, const Duplicate& agent) {
  const bool ended = endAgent(vorlu, agent);
  writeDialogCommand(vorlu, "quit:");
  vorlu.platform.clock.sleep(seconds(2));
  return ended;
}

}  // namespace vorlu
