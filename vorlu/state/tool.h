#pragma once

#include "vorlu/platform/processes.h"
#include "vorlu/state/log.h"

namespace vorlu {

/// Runs a program to its end. One that can't be started, or is killed at its time limit, is logged as an error.
ProcessResult runTool(Processes& processes, Log& log, const Command& command);

}  // namespace vorlu
