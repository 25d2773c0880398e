#include "vorlu/policy/update_run.h"

#include "tests/flow/prompted_run.h"
#include "vorlu/platform/termination.h"
#include "vorlu/policy/test_update_flow.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

class UpdateRun : public PromptedRun {
 protected:
  UpdateRun() {
    RunDataFile file;
    file.CurrentRunType = "scheduledUpdateRequired";
    store(file);
  }
  void update(const Strings& names, UpdateRunKind kind = UpdateRunKind::scheduled) {
    std::vector<ApplicationInventory> updates;
    for (const std::string& name : names) updates.push_back(pending(name));
    runUpdateWithProgress(vorlu, updates, kind);
    EXPECT_EQ(runData().CurrentRunType, "scheduledUpdateRequired");
    EXPECT_FALSE(mac.exists(paths::watchReceipt));
    EXPECT_TRUE(vorlu.progress.processWatchList.empty() && vorlu.progress.appBinaries.empty());
  }
  std::size_t told(const std::string& line) {
    return static_cast<std::size_t>(std::count(log.begin(), log.end(), line));
  }

  Lines log;
};

TEST_F(UpdateRun, PublishesWhatItDoesAndShowsItInOneWindow) {
  addApp("Slides");
  addApp("Draw", false);
  std::optional<WatchReceiptData> published;
  vorlu.catalog.entries[1].preInstallScript = "true";
  mac.processes.on("zsh: true", {.effect = [&](const Command&) {
                     published = *decodePropertyList<WatchReceiptData>(mac.read(paths::watchReceipt));
                   }});
  mac.write(paths::watchReceipt, "of a run that was killed");
  update({"Slides", "Draw"});
  EXPECT_EQ(seen(), "window, relaunch") << "Draw wasn't open";
  ASSERT_TRUE(published);
  EXPECT_EQ(fmt::format("{} {} {} {} {}", *published->parentPID, *published->currentUpdate, *published->updateCount,
                        *published->identifier, *published->promptPosition),
            "4000 2 2 id.Draw topright");
  EXPECT_THAT(mac.read(paths::dialogCommandFile), testing::EndsWith("Complete ✅\nprogress: complete\nquit:\n"));
}

TEST_F(UpdateRun, GivesBackWhatItTookWhenItIsAskedToEnd) {
  addApp("Slides");
  vorlu.catalog.entries[0].preInstallScript = "true";
  mac.processes.on("zsh: true", {.effect = [](const Command&) { throw Terminated{}; }});
  EXPECT_THROW(update({"Slides"}), Terminated);
  EXPECT_EQ(seen(), "window, relaunch");
  EXPECT_FALSE(mac.exists(paths::watchReceipt));
  EXPECT_THAT(mac.read(paths::dialogCommandFile), testing::EndsWith("\nquit:\n"));
  EXPECT_EQ(installedVersion("Slides"), "1.0");
}

TEST_F(UpdateRun, BringsAStubbornAppForwardFiveTimesAndForcesIt) {
  addApp("Slides");
  ignoresQuit = true;
  const Seconds before = mac.clock.now();
  update({"Slides"});
  log = messages();
  EXPECT_EQ(seen(), "window, bring forward, bring forward, bring forward, bring forward, bring forward, relaunch");
  EXPECT_EQ(told("Slides is still running..."), 5U);
  EXPECT_EQ(told("Unable to gracefully quit Slides, the process appears to have hung."), 1U);
  EXPECT_EQ(told("Force Quitting Slides..."), 1U);
  EXPECT_EQ(installedVersion("Slides"), "2.0");
  EXPECT_EQ(closedAt - before, 3 + 2 + 2 + 120);
}

TEST_F(UpdateRun, SaysWhatBecameOfAnAppThatRunsStill) {
  const char* const stays =
      "Error: Slides could not quit. The update will be attempted, but if the App has still not quit the update will "
      "fail due to the App being open.";
  addApp("Slides");
  vorlu.catalog.entries[0].gracefulQuit = false;
  unkillable = true;
  update({"Slides"}, UpdateRunKind::test);
  log = messages();
  EXPECT_EQ(told(stays), 1U);
  EXPECT_EQ(seen(), "relaunch");
  EXPECT_FALSE(mac.exists(paths::dialogCommandFile)) << "a test shows nothing";
  EXPECT_THAT(tools(), testing::Not(Contains(HasSubstr("osascript"))));
}

TEST_F(UpdateRun, EndsAProcessThatComesAnewWhileItWaits) {
  addApp("Slides");
  ignoresQuit = true;
  mac.clock.at(12, [this] { open("Slides"); });
  const Seconds before = mac.clock.now();
  update({"Slides"});
  EXPECT_EQ(closedAt - before, 12) << "not waited for";
  EXPECT_EQ(installedVersion("Slides"), "2.0");
}

TEST_F(UpdateRun, TestOfTheCatalogTellsWhatCameOfEachApp) {
  const auto test = [this](const Lines& open, const char* unverified, const char* broken) {
    vorlu.updates = {};
    for (AppBlueprints& entry : vorlu.catalog.entries) {
      install(*entry.appName);
      entry.skipServerVerification = *entry.appName == unverified;
      entry.universalInstallerHash =
          *entry.appName == broken ? "wrong" : sha256(appArchive(*entry.appName + ".app", "2.0"));
    }
    mac.files.remove(paths::downloads);
    mac.makeFolder(paths::downloads);
    for (const std::string& name : open) ScriptedUser::open(name);
    vorlu.modes.testingBlueprints = true;
    const std::optional<int> status = endOf([this] { testUpdateFlow(vorlu); });
    log = messages();
    EXPECT_FALSE(mac.exists(paths::dialogCommandFile)) << "a test shows nothing";
    return status;
  };
  for (const char* name : {"Slides", "Draw", "Notes"}) addApp(name, false);
  EXPECT_EQ(test({}, "", ""), 0);
  EXPECT_EQ(told("No cached updates") + told("All updates installed successfully"), 2U);
  EXPECT_EQ(test({"Slides", "Draw"}, "Draw", ""), 0);
  EXPECT_EQ(told("Server verification for Draw is not enabled. Skipping update test..."), 1U);
  EXPECT_EQ(installedVersion("Slides") + installedVersion("Draw") + installedVersion("Notes"), "2.01.02.0");
  EXPECT_EQ(test({"Slides", "Draw"}, "", "Draw"), 1);
  EXPECT_EQ(told("Successful updates: Notes, Slides") + told("Failed updates: Draw"), 2U);
  EXPECT_EQ(installedVersion("Slides") + installedVersion("Draw") + installedVersion("Notes"), "2.01.02.0");
}

TEST_F(UpdateRun, AnAppThatIsNoLongerDueCountsByItsVersion) {
  addApp("Slides");
  addApp("Notes");
  mac.addApplication(pathOf("Slides"), "com.example.Slides", "2.0");  // by the user meanwhile
  mac.files.remove(pathOf("Notes"));
  setPreferences("ScheduledUpdates", "<key>autoRelaunchApps</key><false/>");
  update({"Slides", "Notes"});
  EXPECT_EQ(vorlu.updates.updatesInstalled, Lines{"Slides"});
  EXPECT_EQ(vorlu.updates.failedAppNames, Lines{"Notes"});
  EXPECT_THAT(messages(), Contains("Skipping auto-relaunch of Slides because auto-relaunch is disabled"));
}

}  // namespace
}  // namespace vorlu::test
