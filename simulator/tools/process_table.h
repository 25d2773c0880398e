#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace vorlu::simulator {

/// A process of this Mac. Processes that have ended but aren't reaped yet count as gone.
struct Process {
  pid_t pid = 0;
  pid_t parent = 0;
  pid_t group = 0;
  uid_t user = 0;
  char state = '?';
  /// Base name of what was started: the script's own name for a script, and never cut at 15 characters.
  std::string name;
  std::string program;                 ///< path of the program, or of the script
  std::vector<std::string> arguments;  ///< with the name it was called by
  double age = 0;                      ///< real seconds since it started
  double cpuTime = 0;                  ///< seconds
  long residentKilobytes = 0;
};

/// All processes, by rising id, with ages of one moment: of two, the one that was started first is never younger.
std::vector<Process> allProcesses();
std::optional<Process> findProcess(pid_t pid);

/// Arguments joined with blanks, as ps shows them.
std::string commandLine(const Process& process);
std::string userName(uid_t user);

}  // namespace vorlu::simulator
