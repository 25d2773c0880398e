#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "vorlu/platform/processes.h"
#include "vorlu/platform/result.h"

namespace vorlu {

/// The user this process runs as.
struct OwnUser {
  std::string name;
  std::string home;
};
OwnUser ownUser();

/// The environment that every child gets, as "NAME=value": nothing of the agent's own but the time zone and the
/// display's variables.
std::vector<std::string> childEnvironment();

/// Starts a program as leader of a session of its own, with default signals, in "/", standard input from /dev/null,
/// both outputs to `outputDescriptor` (-1 discards them) and nothing else open. The process id; a failure names the
/// program.
Result<pid_t> spawnChild(const Command& command, int outputDescriptor);

}  // namespace vorlu
