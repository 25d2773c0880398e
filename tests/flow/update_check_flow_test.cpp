#include "vorlu/policy/update_check_flow.h"

#include <fmt/format.h>

#include "tests/unit/install/install_run.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

const std::string stored = "Mar 02 2026 12:00:00 +0000";

class UpdateCheckFlow : public InstallRun {
 protected:
  UpdateCheckFlow() {
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"});
    setPreferences("GeneralOptions", "<key>autoUpdate</key><false/>");
    RunDataFile file;
    file.CurrentRunType = "N/A";
    store(file);
  }

  std::optional<int> flow(bool hourly) {
    return endOf([&] { updateCheckFlow(vorlu, hourly); });
  }
};

TEST_F(UpdateCheckFlow, HourlyFormInstallsAndSaysWhenItIsDueAgain) {
  const std::string hash = *addToCatalog("Slides").universalInstallerHash;
  install("Slides");
  std::string typeDuringInstall;
  vorlu.catalog.entries[0].preInstallScript = "true";
  mac.processes.on("zsh: true",
                   {.output = "", .effect = [&](const Command&) { typeDuringInstall = *runData().CurrentRunType; }});
  EXPECT_EQ(flow(true), std::nullopt);
  EXPECT_EQ(typeDuringInstall, "hourlyUpdateCheck");
  Lines expected =
      joined({"Checking for new updates...", "Updating installed App inventory...", "Update required: Slides v2.0."},
             linesOfUpdate("Slides", hash));
  expected.insert(expected.end() - 3, "Running pre-install scripts...");
  expected.insert(expected.end(), {"Updating installed App inventory...", "Icon check complete"});
  EXPECT_EQ(messages(), expected);
  EXPECT_EQ(runData().LastCompliant, stored);
  EXPECT_FALSE(vorlu.updates.compliantThisRun);
  const std::int64_t wait = *runData().NextUpdateAttempt - static_cast<std::int64_t>(mac.clock.now());
  EXPECT_GE(wait, 3780);
  EXPECT_LE(wait, 4800);
  EXPECT_THAT(mac.read(paths::appInventory), ::testing::HasSubstr("\"installedVersion\" : \"2.0\""));
}

TEST_F(UpdateCheckFlow, FailingAppsBetweenGoodOnesStopNothing) {
  for (const std::string name : {"A", "Bad Hash", "Gone", "B"}) {
    addToCatalog(name);
    install(name);
  }
  vorlu.catalog.entries[1].universalInstallerHash = "wrong";
  answers.erase("/2.zip");
  EXPECT_EQ(flow(false), std::nullopt);
  for (const auto& [name, version] : {std::pair{"A", "2.0"}, {"Bad Hash", "1.0"}, {"Gone", "1.0"}, {"B", "2.0"}})
    EXPECT_EQ(installedVersion(name), version);
  EXPECT_EQ(runData().LastCompliant, stored) << "only an app in use holds the date back";
  EXPECT_EQ(vorlu.updates.failedUpdates, (Lines{"server.Bad Hash", "server.Gone"})) << "for the scheduled flow";
  EXPECT_THAT(leftovers(), ::testing::IsEmpty());
}

TEST_F(UpdateCheckFlow, AnAppInUseStaysCachedAndHoldsTheDateBack) {
  addToCatalog("A");
  install("A");
  mac.applications.running = {"com.example.A"};
  EXPECT_EQ(flow(false), std::nullopt);
  EXPECT_EQ(installedVersion("A"), "1.0");
  EXPECT_THAT(leftovers(), ElementsAre("A-v2.0.zip"));
  EXPECT_EQ(runData().LastCompliant, std::nullopt);
}

TEST_F(UpdateCheckFlow, CatalogTestPassesOverUnverifiedApps) {
  addToCatalog("A").skipServerVerification = true;
  addToCatalog("B");
  install("A");
  install("B");
  vorlu.modes.testingBlueprints = true;
  EXPECT_EQ(flow(false), std::nullopt);
  EXPECT_THAT(messages(), Contains("Server verification for A is not enabled. Skipping update test..."));
  EXPECT_EQ(installedVersion("A"), "1.0");
  EXPECT_EQ(installedVersion("B"), "2.0");
}

}  // namespace
}  // namespace vorlu::test
