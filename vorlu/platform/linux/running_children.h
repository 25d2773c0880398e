#pragma once

#include <signal.h>
#include <sys/types.h>

namespace vorlu {

/// Ignores SIGPIPE; SIGTERM and SIGINT kill the process groups of all registered children and end the agent with 143.
/// Children that were launched to outlive the agent aren't registered and live on.
void installSignalHandling();

/// Makes one child known to the signal handler for as long as this lives.
class ChildRegistration {
 public:
  explicit ChildRegistration(pid_t group);
  ChildRegistration(const ChildRegistration&) = delete;
  ChildRegistration& operator=(const ChildRegistration&) = delete;
  ~ChildRegistration();

 private:
  pid_t group_;
};

/// Keeps SIGTERM and SIGINT from this thread while a child is started but not yet registered.
class TerminationHeld {
 public:
  TerminationHeld();
  TerminationHeld(const TerminationHeld&) = delete;
  TerminationHeld& operator=(const TerminationHeld&) = delete;
  ~TerminationHeld();

 private:
  sigset_t before_;
};

}  // namespace vorlu
