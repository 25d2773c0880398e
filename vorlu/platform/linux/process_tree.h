#pragma once

#include <sys/types.h>

namespace vorlu {

/// Kills a session leader that is the caller's child, its session and all its descendants, those in sessions of their
/// own included. What detached itself fully (its parent gone and its session its own) is no longer told apart from the
/// rest of the machine and lives on. The child is left to be waited for.
void killTree(pid_t leader);

}  // namespace vorlu
