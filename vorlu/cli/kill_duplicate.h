#pragma once

#include "vorlu/state/duplicates.h"

namespace vorlu {

/// Quits the other agent's prompts, ends it and its `Dialog` processes. Only the very agent that was found is signalled:
/// a process that took over its id is left alone. One that doesn't follow SIGTERM within a minute is killed. False when
/// it still runs.
bool killDuplicate(Vorlu& vorlu, const Duplicate& agent);

/// The same for an install that hangs: the agent is ended first and its window closed then.
bool killHungInstall(Vorlu& vorlu, const Duplicate& agent);

}  // namespace vorlu
