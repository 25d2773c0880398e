#include "vorlu/platform/linux/process_tree.h"

#include <signal.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "vorlu/platform/linux/process_ids.h"

namespace vorlu {
namespace {

/// A process that forks faster than it is found isn't chased for ever.
constexpr int rounds = 20;

struct ProcessLine {
  pid_t pid = 0;
  pid_t parent = 0;
  pid_t session = 0;
  char state = '?';
};

std::vector<ProcessLine> allProcesses() {
  std::vector<ProcessLine> processes;
  for (const pid_t pid : processIds()) {
    ProcessLine process;
    process.pid = pid;
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(file, line, '\0');
    // The name stands in brackets and may hold anything, brackets too.
    const auto afterName = line.rfind(") ");
    if (afterName == std::string::npos) continue;
    if (std::sscanf(line.c_str() + afterName, ") %c %d %*d %d", &process.state, &process.parent, &process.session) == 3)
      processes.push_back(process);
  }
  return processes;
}

/// Adds to `family` whoever has a parent or a session in it; answers those that still run.
std::set<pid_t> growFamily(std::set<pid_t>& family) {
  const auto processes = allProcesses();
  std::set<pid_t> alive;
  for (bool grown = true; grown;) {
    grown = false;
    for (const ProcessLine& process : processes) {
      const bool known = family.contains(process.pid);
      if (!known && !family.contains(process.parent) && !family.contains(process.session)) continue;
      grown |= family.insert(process.pid).second;
      if (process.state != 'Z' && process.state != 'X') alive.insert(process.pid);
    }
  }
  return alive;
}

}  // namespace

void killTree(pid_t leader) {
  std::set<pid_t> family = {leader};
  std::set<pid_t> alive = growFamily(family);
  ::kill(-leader, SIGKILL);
  for (int round = 0; round < rounds && !alive.empty(); ++round) {
    for (const pid_t process : alive) ::kill(process, SIGKILL);
    alive = growFamily(family);
  }
}

}  // namespace vorlu
