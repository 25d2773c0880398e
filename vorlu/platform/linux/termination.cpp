#include "vorlu/platform/linux/termination.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>

#include "vorlu/platform/linux/descriptor.h"
#include "vorlu/platform/termination.h"

namespace vorlu {
namespace {

// A signal handler has no object to look at, so these are the process's.
std::atomic<bool> asked = false;
std::atomic<int> wakeUp = -1;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void askToEnd(int) {
  const int before = errno;
  asked = true;
  ::eventfd_write(wakeUp, 1);
  errno = before;
}

}  // namespace

void installSignalHandling() {
  wakeUp = aboveStandard(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)).release();
  struct sigaction action {};
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &action, nullptr);
  action.sa_handler = wakeUp >= 0 ? askToEnd : SIG_DFL;
  action.sa_flags = SA_RESTART;  // what waits polls the descriptor; nothing else need notice
  ::sigfillset(&action.sa_mask);
  ::sigaction(SIGTERM, &action, nullptr);
  ::sigaction(SIGINT, &action, nullptr);
}

bool terminationAsked() {
  return asked;
}

int terminationDescriptor() {
  return wakeUp;
}

void sleepUnlessTerminated(std::chrono::nanoseconds duration) {
  using std::chrono::nanoseconds;
  using Monotonic = std::chrono::steady_clock;
  const auto end = Monotonic::now() + duration;
  pollfd wait{terminationDescriptor(), POLLIN, 0};
  do {
    const auto left = std::max<nanoseconds>(end - Monotonic::now(), nanoseconds::zero());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    const timespec limit{seconds.count(), (left - seconds).count()};
    if (::ppoll(&wait, 1, &limit, nullptr) > 0) throw Terminated{};
  } while (Monotonic::now() < end);
}

}  // namespace vorlu
