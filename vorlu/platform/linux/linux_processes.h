#pragma once

#include "vorlu/platform/processes.h"

namespace vorlu {

/// Children by posix_spawn, each in a session of its own. The limit of a run is real time, whatever the Mac's clock
/// says.
class LinuxProcesses : public Processes {
 public:
  ProcessResult run(const Command& command) override;
  std::unique_ptr<RunningProcess> start(const Command& command) override;
  std::optional<pid_t> launch(const Command& command) override;
  void throwIfTerminated() override;
  bool signal(pid_t pid, int signal) override;
  bool isAlive(pid_t pid) override;
  pid_t ownPid() override;
  pid_t parentPid() override;
  std::string userName() override;
};

}  // namespace vorlu
