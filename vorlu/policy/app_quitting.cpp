#include "vorlu/policy/app_quitting.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/install/quit_app.h"
#include "vorlu/install/running_apps.h"
#include "vorlu/policy/quit_wait.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/state/shell_line.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::chrono::seconds timeToQuit{2};
constexpr std::chrono::seconds timeToDie{3};

bool runs(Vorlu& vorlu) {
  return isAppRunning(vorlu, vorlu.currentApp.installedBundleIdentifier, vorlu.currentApp.appName);
}

/// True when the app has gone.
bool quitGracefully(Vorlu& vorlu, const WatchedProcesses& before) {
  const std::string& appName = vorlu.currentApp.appName;
  quitApp(vorlu, appName);
  vorlu.platform.clock.sleep(timeToQuit);
  if (!runs(vorlu)) return true;
  QuitWait wait(vorlu, before);
  QuitWait::State state = wait.step();
  while (state == QuitWait::State::waiting) state = wait.step();
  if (state == QuitWait::State::quit) return true;
  vorlu.log(fmt::format("Unable to gracefully quit {}, the process appears to have hung.", appName));
  vorlu.log(fmt::format("Force Quitting {}...", appName));
  return false;
}

void forceQuit(Vorlu& vorlu, const WatchedProcesses& before) {
  const std::string& appName = vorlu.currentApp.appName;
  killAppBinaries(vorlu);
  vorlu.platform.clock.sleep(timeToDie);
  if (!runs(vorlu)) return;
  const WatchedProcesses now = watchedProcesses(vorlu);
  if (std::all_of(now.begin(), now.end(), [](const auto& process) { return process.second.empty(); })) return;
  if (now == before) {
    vorlu.log(
        fmt::format("Error: {} could not quit. The update will be attempted, but if the App has still not quit "
                    "the update will fail due to the App being open.",
                    appName));
  } else {
    vorlu.log(fmt::format(
        "{} appears to have successfully quit but has been relaunched. Continuing with the update attempt...",
        appName));
  }
}

}  // namespace

void quitRunningApp(Vorlu& vorlu) {
  const WatchedProcesses before = watchedProcesses(vorlu);
  if (vorlu.currentApp.gracefulQuit && quitGracefully(vorlu, before)) return;
  forceQuit(vorlu, before);
}

void killAppBinaries(Vorlu& vorlu) {
  if (vorlu.currentApp.appType != "appBundle") return;
  const std::string folder = vorlu.currentApp.installedPath + "/Contents/MacOS";
  if (!vorlu.platform.files.isDirectory(folder)) return;
  const auto entries = vorlu.platform.files.list(folder);
  if (!entries) {
    vorlu.log(fmt::format("Failed to list App Binary folder items: {}", entries.error()));
    return;
  }
  for (const std::string& binary : *entries)
    runShell(vorlu, fmt::format("killall \"{}\" > /dev/null 2>&1", insideDoubleQuotes(binary)));
}

}  // namespace vorlu
