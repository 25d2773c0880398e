#include "simulator/host/forward_request.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace vorlu::simulator {

namespace {

volatile sig_atomic_t signalled = 0;

// The request of a user who may not signal the process.
std::string requestPath(pid_t process) {
  return fmt::format("/private/tmp/.forward-{}", process);
}

}  // namespace

void askForward(pid_t process) {
  if (kill(process, SIGURG) == 0 || errno != EPERM) return;
  const int file = open(requestPath(process).c_str(), O_CREAT | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file >= 0) close(file);
}

void listenForForwardRequests() {
  signal(SIGURG, [](int) { signalled = 1; });
  unlink(requestPath(getpid()).c_str());  // meant for an earlier process of this id
}

bool takeForwardRequest() {
  const bool asked = signalled != 0;
  signalled = 0;
  return unlink(requestPath(getpid()).c_str()) == 0 || asked;
}

}  // namespace vorlu::simulator
