#pragma once

#include "vorlu/platform/processes.h"
#include "vorlu/state/log.h"

namespace vorlu {

/// Runs a program to its end. One that can't be started, or is killed at its time limit, is logged as an error.
ProcessResult runTool(Processes& processes, Log& log, const Command& command);

/// Logs as an error that a program couldn't be started or was killed at its time limit.
void logToolFailure(Log& log, const Command& command, const ProcessResult& result);

}  // namespace vorlu
