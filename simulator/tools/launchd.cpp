#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "simulator/tools/tool.h"

namespace vorlu::simulator {

// The first process of a Mac: it says when the Mac is up and takes in the processes whose parents have gone.
int runLaunchd(const Arguments& /*arguments*/) {
  sigset_t signals;
  sigfillset(&signals);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  if (write(STDOUT_FILENO, "up\n", 3) != 3) return 1;
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(standard);
  for (;;) {
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    sigwaitinfo(&signals, nullptr);
  }
}

}  // namespace vorlu::simulator
