#include "vorlu/install/running_apps.h"

#include "tests/unit/install/install_run.h"
#include "vorlu/install/shell_line.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

class RunningApps : public InstallRun {};

TEST_F(RunningApps, AsksBySystemTypeAndLists) {
  const struct {
    const char* what;
    const char* system;
    const char* appType;
    Strings blocking;
    std::set<std::string> running;
    const char* process;  ///< that pgrep finds
    bool answer;
    Strings commands;
  } cases[] = {
      {"by identifier", "14.5.0", "appBundle", {"Helper"}, {"com.example.Slides"}, "", true, {}},
      {"processes of a bundle don't count", "14.5.0", "appBundle", {"Helper"}, {}, "Helper", false, {}},
      {"no list of applications",
       "13.0.0",
       "appBundle",
       {},
       {"com.example.Slides"},
       "",
       false,
       {"/usr/bin/pgrep -x Slides"}},
      {"the same, running", "13.0.0", "appBundle", {}, {}, "Slides", true, {"/usr/bin/pgrep -x Slides"}},
      {"next release again", "13.0.1", "appBundle", {}, {"com.example.Slides"}, "", true, {}},
      {"tool, second name",
       "14.5.0",
       "tool",
       {"one", "my tool"},
       {},
       "my tool",
       true,
       {"/usr/bin/pgrep -x one", "/usr/bin/pgrep -x 'my tool'"}},
      {"tool on that release", "13.0.0", "tool", {"one"}, {}, "", false, {"/usr/bin/pgrep -x one"}},
      {"tool without names", "14.5.0", "tool", {}, {"Unknown", ""}, "", false, {}},
      {"tool without names on that release", "13.0.0", "tool", {}, {}, "", false, {}},
  };
  install("Slides");
  mac.write("/Applications/Slides.app/Contents/MacOS/Foo.app.dylib", "");
  mac.processes.otherwise({.output = "", .status = 1});
  for (const auto& c : cases) {
    mac.device.system = c.system;
    mac.applications.running = c.running;
    if (*c.process) mac.processes.on(commandLine(commandOf("/usr/bin/pgrep", {"-x", c.process})), {.output = "77\n"});
    vorlu.currentApp.appType = c.appType;
    vorlu.currentApp.blockingApps = c.blocking;
    vorlu.progress.appBinaries = vorlu.progress.processWatchList = {"of another app"};
    EXPECT_EQ(isSelectedAppRunning(vorlu, "/Applications/Slides.app", "Slides"), c.answer) << c.what;
    EXPECT_THAT(tools(), ElementsAreArray(c.commands)) << c.what;
    EXPECT_THAT(messages(), IsEmpty()) << c.what;
    EXPECT_THAT(vorlu.progress.processWatchList, IsEmpty()) << c.what;
  }
}

TEST_F(RunningApps, RelaunchOfAToolOpensEachName) {
  vorlu.currentApp.appType = "tool";
  vorlu.currentApp.blockingApps = {"tool", "my \"$x\" tool's"};
  vorlu.progress.appBinaries = {"earlier"};
  mac.processes.onMatch("^zsh: ", {});
  relaunchApp(vorlu);
  EXPECT_THAT(tools(), ElementsAre("zsh: killall tool", "zsh: killall 'my \"$x\" tool'\\''s'",
                                   "zsh: su alice -c 'open \"tool\"'",
                                   "zsh: su alice -c 'open \"my \\\"\\$x\\\" tool'\\''s\"'"));
}

}  // namespace
}  // namespace vorlu::test
