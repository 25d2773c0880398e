#include <algorithm>

#include "ctl/lint/script_faults.h"
#include "vorlu/platform/linux/linux_processes.h"

namespace vorlu::ctl {

std::optional<std::string> shellSyntaxFault(const PreparedScript& script) {
  LinuxProcesses processes;
  Command command;
  command.program = script.interpreter;
  command.limit = std::chrono::seconds(10);
  if (script.interpreter == "/bin/zsh") command.arguments.emplace_back("-f");  // no start-up files
  command.arguments.insert(command.arguments.end(), {"-n", "-c", script.text});
  const ProcessResult result = processes.run(command);
  if (!result.started || result.timedOut || result.status == 0) return std::nullopt;
  const std::string said = trimmed(result.output);
  return said.substr(0, said.find('\n'));
}

}  // namespace vorlu::ctl
