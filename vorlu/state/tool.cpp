#include "vorlu/state/tool.h"

#include <fmt/format.h>

namespace vorlu {

ProcessResult runTool(Processes& processes, Log& log, const Command& command) {
  ProcessResult result = processes.run(command);
  logToolFailure(log, command, result);
  return result;
}

void logToolFailure(Log& log, const Command& command, const ProcessResult& result) {
  if (!result.started) log(fmt::format("Error: {} could not be started - {}", command.program, result.error));
  if (result.timedOut)
    log(fmt::format("Error: {} did not end within {} seconds and was stopped", command.program, command.limit.count()));
}

}  // namespace vorlu
