#include "tests/unit/server/server_fixture.h"
#include "vorlu/cli/initialise_run.h"

namespace vorlu::test {
namespace {

const Lines keysObtained =
    joined({"Keychain data required for Vorlu initialisation was not found. Obtaining data..."}, keysAdded);
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
    newRunWithKeys();
    fresh();
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

TEST_F(StartUpTest, WithoutInternet) {
  answer("/connectivity", 503, "");
  freshWithKeys();
  EXPECT_EQ(start(), 1);
  EXPECT_EQ(logged(), (Lines{"Error: No internet connection was detected. Please connect the computer to the internet "
                             "before running Vorlu again",
                             "Exiting...", "Exiting..."}));
  freshWithKeys();
  EXPECT_EQ(start({.offlineTolerated = true}), std::nullopt);
  EXPECT_EQ(logged(),
            Lines{"Warning: No internet connection was detected. Any updates already cached will be installed "
                  "but no new updates will be downloaded"});
  EXPECT_EQ(runData().CurrentRunType.value_or("N/A"), "N/A");
}

TEST_F(StartUpTest, RefreshesKeyMaterialOfAnOlderStamp) {
  serve("timestamp.json", R"({"timestamp": 1700000000})");
  freshWithKeys();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(logged(), joined({"Updating Vorlu certificates..."}, keysAdded));
}

TEST_F(StartUpTest, StopsWhereItCannotGoOn) {
  const auto expectStop = [this](const char* log, const char* jamf) {
    freshWithKeys();
    EXPECT_EQ(start(), 1);
    EXPECT_EQ(logged(), (Lines{log, "Exiting..."}));
    EXPECT_EQ(toldJamf(), Lines{jamf});
    EXPECT_EQ(runData().CurrentRunType.value_or("N/A"), "N/A");
  };
  mac.device.system = "10.15.7";
  expectStop("Error: This version of Vorlu requires at least macOS 11",
             "Error: Unsupported macOS version detected. Vorlu requires at least macOS 11");
  mac.device.system = "11.0.0";
  mac.files.remove(paths::promptComponentReceipt);
  expectStop("One or more components required by Vorlu were not found",
             "Error: Vorlu requires components which could not be installed. Please check the network connection and "
             "try again. For support, contact support@example.com");
}

TEST_F(StartUpTest, YieldsToAnotherAgentWithoutATrace) {
  RunDataFile other;
  other.CurrentRunType = "appInstallRun:firefox";
  other.SecretsTimestamp = 5;
  freshWithKeys();
  setRunData(other);
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4711\n"});
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4711\n"});
  ASSERT_EQ(start(), std::nullopt);  // nobody there at the first look
  freshWithKeys();
  setRunData(other);
  mac.console.take();
  EXPECT_EQ(start(), 0);
  EXPECT_EQ(mac.console.lines(),
            (Lines{"Another instance of Vorlu is already being run by root under proccess ID: 4711", "Exiting..."}));
  EXPECT_EQ(runData().CurrentRunType, "appInstallRun:firefox");
}

TEST_F(StartUpTest, SetsCorruptRunDataAside) {
  // a wrong type alone doesn't keep other keys from being changed first
  const std::pair<std::string, const char*> cases[] = {
      {"garbage", "garbage"}, {plistOf("<key>LastRun</key><string>x</string>"), "<string>x</string>"}};
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
  const Lines old = {"/private/var/tmp/com.mosk.vorlu.UI.log", "/Library/Application Support/MOSK/Bin/moskupdate",
                     "/private/etc/paths.d/unused", "/usr/local/unused/unused", "/usr/local/bin/unused"};
  const Lines others = {"/usr/local/bin/other", "/Library/Application Support/MOSK/Other/x"};
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
  EXPECT_THAT(
      logged(),
      testing::Contains(
          "Error: No Application data was found. Unable to continue. For support please contact support@example.com"));
  freshWithKeys();
  mac.write(paths::offlineData, "[]");
  mac.processes.takeCommands();
  EXPECT_EQ(start({.validateOnly = true}), std::nullopt);
  EXPECT_EQ(mac.processes.takeCommands(), Lines{});  // beside any other agent
}

}  // namespace
}  // namespace vorlu::test
