#include "vorlu/install/running_apps.h"

#include "faults/faulty_files.h"
#include "faults/faulty_platform.h"
#include "tests/unit/install/install_run.h"
#include "vorlu/state/shell_line.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;

class RunningApps : public InstallRun {};

TEST_F(RunningApps, AsksBySystemTypeAndLists) {
  install("Slides");
  mac.write("/Applications/Slides.app/Contents/MacOS/Foo.app.dylib", "");
  mac.processes.onPrefix("", {.output = "", .status = 1});
  mac.processes.on("/usr/bin/pgrep -x 'my tool'", {.output = "77\n"});
  const std::set<std::string> slides = {"com.example.Slides"};
  const auto expectRunning = [&](const char* what, bool answer, const char* system, const char* appType,
                                 const Strings& blocking, const std::set<std::string>& running,
                                 const Strings& commands = {}) {
    mac.device.system = system;
    mac.applications.running = running;
    vorlu.currentApp.appType = appType;
    vorlu.currentApp.blockingApps = blocking;
    vorlu.progress.appBinaries = vorlu.progress.processWatchList = {"of another app"};
    EXPECT_EQ(isSelectedAppRunning(vorlu, "/Applications/Slides.app", "Slides"), answer) << what;
    EXPECT_EQ(tools(), commands) << what;
    EXPECT_EQ(messages(), Lines{}) << what;
    EXPECT_EQ(vorlu.progress.processWatchList, Strings{}) << what;
  };
  const std::string pgrep = "/usr/bin/pgrep -x ";
  expectRunning("by identifier", true, "14.5.0", "appBundle", {"Helper"}, slides);
  expectRunning("processes of a bundle don't count", false, "14.5.0", "appBundle", {"my tool"}, {});
  expectRunning("no list of applications", false, "13.0.0", "appBundle", {}, slides, {pgrep + "Slides"});
  expectRunning("next release again", true, "13.0.1", "appBundle", {}, slides);
  expectRunning("tool, second name", true, "14.5.0", "tool", {"one", "my tool"}, {},
                {pgrep + "one", pgrep + "'my tool'"});
  expectRunning("tool without names", false, "14.5.0", "tool", {}, {"Unknown", ""});
  mac.processes.on(pgrep + "Slides", {.output = "77\n"});
  expectRunning("no list, running", true, "13.0.0", "appBundle", {}, {}, {pgrep + "Slides"});
}

TEST_F(RunningApps, WhatCannotBeFoundOutCountsAsRunning) {
  install("Slides");
  vorlu.currentApp.appType = "appBundle";
  faults::FaultPlan plan;
  faults::FaultyFiles files(mac.files, plan);
  Platform platform = faults::faultyPlatform(mac.platform(), files, mac.processes, mac.urls, mac.keychain);
  Vorlu faulty(platform, site);
  faulty.currentApp.appType = "appBundle";
  mac.applications.running = {"com.example.Slides"};
  for (int call = 1; call <= 4; ++call) {
    plan.arm(std::pair(faults::Fault::io, call));
    EXPECT_TRUE(isSelectedAppRunning(faulty, "/Applications/Slides.app", "Slides")) << plan.seen().struck;
  }
  mac.processes.on("/usr/bin/pgrep -x tool", {.starts = false});
  mac.processes.on("/usr/bin/pgrep -x tool", {.timedOut = true});
  mac.processes.on("/usr/bin/pgrep -x tool", {.status = 1});
  vorlu.currentApp.appType = "tool";
  vorlu.currentApp.blockingApps = {"tool"};
  for (const bool running : {true, true, false}) EXPECT_EQ(isSelectedAppRunning(vorlu, "/x", "x"), running);
}

TEST_F(RunningApps, RelaunchOfAToolOpensEachName) {
  vorlu.currentApp.appType = "tool";
  vorlu.currentApp.blockingApps = {"tool", "my \"$x\" tool's"};
  vorlu.progress.appBinaries = {"earlier"};
  mac.processes.onPrefix("zsh: ", {});
  relaunchApp(vorlu);
  EXPECT_THAT(tools(), ElementsAre("zsh: killall tool", "zsh: killall 'my \"$x\" tool'\\''s'",
                                   "zsh: su alice -c 'open \"tool\"'",
                                   "zsh: su alice -c 'open \"my \\\"\\$x\\\" tool'\\''s\"'"));
}

}  // namespace
}  // namespace vorlu::test
