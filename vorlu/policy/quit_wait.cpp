#include "vorlu/policy/quit_wait.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/install/quit_app.h"
#include "vorlu/install/running_apps.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/state/shell_line.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr int passes = 120;
constexpr std::array nudges = {19, 39, 59, 79, 99};  // counted from 0
constexpr std::chrono::seconds passGap{1};
constexpr std::chrono::milliseconds afterKill{600};

}  // namespace

WatchedProcesses watchedProcesses(Vorlu& vorlu) {
  WatchedProcesses found;
  for (const std::string& name : vorlu.progress.processWatchList) found[name] = trimmed(findProcess(vorlu, name));
  return found;
}

QuitWait::State QuitWait::step() {
  const int pass = pass_++;
  vorlu_.platform.clock.sleep(passGap);
  const WatchedProcesses processes = watchedProcesses(vorlu_);
  const CurrentApp& app = vorlu_.currentApp;
  if (!isAppRunning(vorlu_, app.installedBundleIdentifier, app.appName)) return State::quit;
  if (std::find(nudges.begin(), nudges.end(), pass) != nudges.end()) {
    bringForward();
  } else {
    endReplacement(processes);
  }
  return pass_ < passes ? State::waiting : State::hung;
}

void QuitWait::bringForward() {
  const CurrentApp& app = vorlu_.currentApp;
  vorlu_.log(fmt::format("{} is still running...", app.appName));
  openAsConsoleUser(vorlu_, "-a ", app.installedPath);
  quitApp(vorlu_, app.appName);
}

void QuitWait::endReplacement(const WatchedProcesses& processes) {
  const std::string& name = vorlu_.progress.foundProcess;
  if (name.empty() || processes.at(name) == before_.at(name)) return;
  runShell(vorlu_, fmt::format("killall \"{}\" > /dev/null 2>&1", insideDoubleQuotes(name)));
  vorlu_.platform.clock.sleep(afterKill);
}

}  // namespace vorlu
