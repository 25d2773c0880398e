#pragma once

#include <chrono>

namespace vorlu {

/// Ignores SIGPIPE; SIGTERM and SIGINT ask the agent to end. Without this call they end it at once.
void installSignalHandling();

/// Whether the agent has been asked to end. It never goes back.
bool terminationAsked();

/// Readable once the agent has been asked to end; -1, which poll ignores, without `installSignalHandling`.
int terminationDescriptor();

/// Lets the time pass; throws `Terminated` when the agent is asked to end before it is over.
void sleepUnlessTerminated(std::chrono::nanoseconds duration);

}  // namespace vorlu
