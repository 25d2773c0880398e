// The program of every simulated application. It runs until it is told to quit.
//
// A quit event is a SIGTERM that was queued (osascript does that); `Contents/Resources/ignore-quit` makes the
// application ignore it, like one that asks about unsaved work. A plain SIGTERM, as killall sends it, ends it all the
// same, unless `Contents/Resources/ignore-terminate` exists. Both files are looked for when the signal arrives.

#include <signal.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>

namespace {

char ignoreQuit[PATH_MAX];
char ignoreTerminate[PATH_MAX];

void onTerminate(int /*signal*/, siginfo_t* info, void* /*context*/) {
  const bool quitEvent = info->si_code == SI_QUEUE;
  if (access(quitEvent ? ignoreQuit : ignoreTerminate, F_OK) != 0) _exit(0);
}

// "…/Contents" of the bundle that holds this program; false outside a bundle.
bool findContents(char* contents) {
  const ssize_t length = readlink("/proc/self/exe", contents, PATH_MAX - 1);
  if (length < 0) return false;
  contents[length] = '\0';
  for (int level = 0; level < 2; ++level) {
    char* slash = strrchr(contents, '/');
    if (slash == nullptr) return false;
    *slash = '\0';
  }
  return true;
}

}  // namespace

int main() {
  char contents[PATH_MAX];
  if (!findContents(contents)) {
    fputs("sim-app: this program runs inside an application bundle\n", stderr);
    return 1;
  }
  const int quit = snprintf(ignoreQuit, sizeof ignoreQuit, "%s/Resources/ignore-quit", contents);
  const int terminate = snprintf(ignoreTerminate, sizeof ignoreTerminate, "%s/Resources/ignore-terminate", contents);
  if (quit >= PATH_MAX || terminate >= PATH_MAX) return 1;

  struct sigaction action = {};
  action.sa_sigaction = onTerminate;
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  sigaction(SIGTERM, &action, nullptr);
  for (;;) pause();
}
