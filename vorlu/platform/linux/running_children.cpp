#include "vorlu/platform/linux/running_children.h"

#include <unistd.h>

#include <array>
#include <atomic>

namespace vorlu {
namespace {

/// A signal handler has no object to look at, so this is the process's. The agent runs two children at once at most.
std::array<std::atomic<pid_t>, 16> runningGroups{};
static_assert(std::atomic<pid_t>::is_always_lock_free);

constexpr int terminatedStatus = 143;  // 128 and SIGTERM, as a shell shows it

void endWithChildren(int) {
  for (const auto& group : runningGroups)
    if (const pid_t leader = group.load(); leader > 0) ::kill(-leader, SIGKILL);
  ::_exit(terminatedStatus);
}

}  // namespace

void installSignalHandling() {
  struct sigaction action {};
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &action, nullptr);
  action.sa_handler = endWithChildren;
  ::sigfillset(&action.sa_mask);
  ::sigaction(SIGTERM, &action, nullptr);
  ::sigaction(SIGINT, &action, nullptr);
}

ChildRegistration::ChildRegistration(pid_t group) : group_(group) {
  for (auto& place : runningGroups) {
    pid_t free = 0;
    if (place.compare_exchange_strong(free, group)) return;
  }
}

ChildRegistration::~ChildRegistration() {
  for (auto& place : runningGroups) {
    pid_t own = group_;
    if (place.compare_exchange_strong(own, 0)) return;
  }
}

TerminationHeld::TerminationHeld() {
  sigset_t held;
  ::sigemptyset(&held);
  ::sigaddset(&held, SIGTERM);
  ::sigaddset(&held, SIGINT);
  ::pthread_sigmask(SIG_BLOCK, &held, &before_);
}

TerminationHeld::~TerminationHeld() {
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace vorlu
