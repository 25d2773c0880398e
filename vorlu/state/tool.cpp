#include "vorlu/state/tool.h"

#include <fmt/format.h>

namespace vorlu {

ProcessResult runTool(Processes& processes, Log& log, const Command& command) {
  ProcessResult result = processes.run(command);
  if (!result.started) log(fmt::format("Error: {} could not be started - {}", command.program, result.error));
  if (result.timedOut)
    log(fmt::format("Error: {} did not end within {} seconds and was stopped", command.program, command.limit.count()));
  return result;
}

}  // namespace vorlu
