#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/server/server_fixture.h"
#include "vorlu/cli/initialise_run.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"

namespace vorlu::test {
namespace {

using Lines = std::vector<std::string>;

const Lines keysObtained =
    joined({"Keychain data required for Vorlu initialisation was not found. Obtaining data..."}, keysAdded);
const Lines noKeys = {
    "Keychain data required for Vorlu initialisation was not found. Obtaining data...",
    "Warning: No data was received from the server whilst attempting to gather Vorlu server data.",
    "Warning: No data was received from the server whilst attempting to gather Vorlu server data.",
    "Error: Could not obtain key components required for Vorlu. Please review the Vorlu network requirements. If the "
    "issue persists, contact support@example.com",
    "Error: Keychain data required for Vorlu initialisation could not be obtained"};
const std::string noInternet =
    "Error: No internet connection was detected. Please connect the computer to the internet before running Vorlu "
    "again";

struct StartUpTest : ServerFixture {
  using ServerFixture::mac;

  StartUpTest() {
    for (const std::string& path : {paths::dialogProgram, paths::promptComponentReceipt}) mac.write(path, "component");
    mac.makeFolder(paths::run);
    RunDataFile file;
    file.SecretsTimestamp = 5;  // newer than the sample server's
    setRunData(file);
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "", .status = 1});
  }
  std::optional<int> start(StartUp startUp = {}) {
    return endOf([&] { initialiseRun(*run, startUp); });
  }
  void fresh() {
    run = &newRun();
    run->modes.updateMode = true;
  }
  void freshWithKeys() {
    run = &newRunWithKeys();
    run->modes.updateMode = true;
  }
  Vorlu* run = nullptr;
};

TEST_F(StartUpTest, FetchesKeyMaterialOnceAndIsQuietAfterwards) {
  fresh();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(logged(), keysObtained);
  EXPECT_EQ(runData().SecretsTimestamp, static_cast<std::int64_t>(mac.clock.now()));
  EXPECT_EQ(run->modes.runStage, "Updates");
  EXPECT_TRUE(mac.files.isDirectory(paths::downloads) && mac.files.isDirectory(paths::output));
  fresh();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(StartUpTest, AnOfflineMacStopsUnlessTheCallerBearsIt) {
  server->stop();
  fresh();
  EXPECT_EQ(start(), 1);
  EXPECT_EQ(logged().front(), noKeys.front());
  EXPECT_EQ(logged().back(), "Exiting...");
}

TEST_F(StartUpTest, WithoutInternet) {
  answer("/connectivity", 503, "");
  const struct {
    StartUp startUp;
    std::optional<int> status;
    Lines log;
  } cases[] = {
      {{}, 1, {noInternet, "Exiting...", "Exiting..."}},
      {{.offlineTolerated = true},
       std::nullopt,
       {"Warning: No internet connection was detected. Any updates already cached will be installed but no new updates "
        "will be downloaded"}},
  };
  for (const auto& [startUp, status, log] : cases) {
    freshWithKeys();
    EXPECT_EQ(start(startUp), status);
    EXPECT_EQ(logged(), log);
    EXPECT_EQ(runData().CurrentRunType.value_or("N/A"), "N/A");
  }
}

TEST_F(StartUpTest, RefreshesKeyMaterialOfAnOlderStamp) {
  serve("timestamp.json", R"({"timestamp": 1700000000})");
  freshWithKeys();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(logged(), joined({"Updating Vorlu certificates..."}, keysAdded));
  freshWithKeys();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(StartUpTest, StopsWhereItCannotGoOn) {
  const struct {
    const char* what;
    std::function<void(StartUpTest&)> arrange;
    std::string log;   // the last line before the end
    std::string jamf;  // what Jamf Pro is told last
  } cases[] = {
      {"old system", [](StartUpTest& test) { test.mac.device.system = "10.15.7"; },
       "Error: This version of Vorlu requires at least macOS 11",
       "Error: Unsupported macOS version detected. Vorlu requires at least macOS 11"},
      {"no component",
       [](StartUpTest& test) {
         test.mac.device.system = "11.0.0";
         test.mac.files.remove(paths::promptComponentReceipt);
       },
       "One or more components required by Vorlu were not found",
       "Error: Vorlu requires components which could not be installed. Please check the network connection and try "
       "again. For support, contact support@example.com"},
  };
  for (const auto& [what, arrange, log, jamf] : cases) {
    freshWithKeys();
    arrange(*this);
    EXPECT_EQ(start(), 1) << what;
    EXPECT_EQ(logged(), (Lines{log, "Exiting..."})) << what;
    EXPECT_EQ(toldJamf(), Lines{jamf}) << what;
    EXPECT_EQ(runData().CurrentRunType.value_or("N/A"), "N/A") << what;
  }
}

TEST_F(StartUpTest, YieldsToAnotherAgentWithoutATrace) {
  RunDataFile other;
  other.CurrentRunType = "appInstallRun:firefox";
  other.SecretsTimestamp = 5;
  freshWithKeys();
  setRunData(other);
  const std::string before = mac.read(paths::runData);
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4711\n"});
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4711\n"});
  ASSERT_EQ(start(), std::nullopt);  // nobody there at the first look
  freshWithKeys();
  setRunData(other);
  mac.console.clear();
  EXPECT_EQ(start(), 0);
  EXPECT_EQ(mac.console.lines(),
            (Lines{"Another instance of Vorlu is already being run by root under proccess ID: 4711", "Exiting..."}));
  EXPECT_EQ(runData().CurrentRunType, "appInstallRun:firefox");
}

TEST_F(StartUpTest, SetsCorruptRunDataAside) {
  const struct {
    const char* content;
    const char* kept;  // a wrong type alone doesn't keep other keys from being changed first
  } cases[] = {
      {"garbage", "garbage"},
      {"<plist version=\"1.0\"><array/></plist>", "<array/>"},
      {"<plist version=\"1.0\"><dict><key>LastRun</key><string>x</string></dict></plist>", "<string>x</string>"}};
  for (const auto& [content, kept] : cases) {
    freshWithKeys();
    mac.write(paths::runData, content);
    EXPECT_EQ(start(), std::nullopt);
    EXPECT_THAT(mac.read(paths::runData + ".corrupt"), testing::HasSubstr(kept));
    EXPECT_EQ(runData().CurrentRunType, "N/A");
    EXPECT_THAT(
        logged(),
        testing::Contains(testing::StartsWith("Warning: The run data plist could not be decoded and was moved to ")));
  }
}

TEST_F(StartUpTest, RemovesWhatOlderVersionsLeftAndNothingElse) {
  const Lines old = {"/private/var/tmp/com.mosk.vorlu.UI.log",
                     "/Library/Application Support/MOSK/Bin/moskupdate",
                     "/Library/LaunchAgents/com.mosk.update.logoutagent.plist",
                     "/private/etc/paths.d/unused",
                     "/usr/local/unused/unused",
                     "/usr/local/sal/file",
                     "/usr/local/bin/unused",
                     "/Library/Application Support/MOSK/unused/x"};
  const Lines others = {"/usr/local/bin/other", "/Library/Application Support/MOSK/Other/x",
                        "/Library/LaunchAgents/com.example.plist"};
  for (const auto& path : joined(old, others)) mac.write(path, "x");
  freshWithKeys();
  EXPECT_EQ(start(), std::nullopt);
  for (const auto& path : old) EXPECT_FALSE(mac.exists(path)) << path;
  for (const auto& path : others) EXPECT_TRUE(mac.exists(path)) << path;
}

TEST_F(StartUpTest, ValidationNeedsACatalogFromSomewhere) {
  answer("/live", 503, "{}");
  freshWithKeys();
  EXPECT_EQ(start({.validateOnly = true}), 1);
  EXPECT_THAT(logged(), testing::Contains("Error: No Application data was found. Unable to continue. For support "
                                          "please contact support@example.com"));
  freshWithKeys();
  mac.write(paths::offlineData, "[]");
  mac.processes.forgetCommands();
  EXPECT_EQ(start({.validateOnly = true}), std::nullopt);
  EXPECT_EQ(mac.processes.commands(), Lines{});  // beside any other agent
}

}  // namespace
}  // namespace vorlu::test
