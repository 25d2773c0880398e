#include "vorlu/state/run_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/state/state_run.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/receipts.h"
#include "vorlu/state/run_type.h"

namespace vorlu::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Selector = RunDataSelector;

constexpr std::int64_t start = 1772452800;  // the clock's first moment

struct RunDataTest : testing::Test, StateRun {
  void store(const RunDataFile& file) { mac.write(paths::runData, encodePropertyList(file)); }
  RunDataFile stored() {
    const auto file = loadRunData(mac.files);
    EXPECT_TRUE(file.ok()) << file.error();
    return file.ok() ? *file : RunDataFile{};
  }
};

TEST_F(RunDataTest, CreatesFolderAndFile) {
  mac.consoleUser.user = "loginwindow";
  ensureRunData(vorlu);
  EXPECT_THAT(shown(), ElementsAre("The run directory was not found. Attempting to create it...",
                                   "Successfully created the run directory", "The run data plist was not found",
                                   "Setting up the Deferrals Plist..."));
  EXPECT_EQ(mac.files.info(paths::run)->mode, 0700u);
  EXPECT_EQ(mac.files.info(paths::runData)->mode, 0640u);
  const RunDataFile file = stored();
  EXPECT_EQ(file.DeferCount, "2");
  EXPECT_EQ(file.CurrentRunType, "N/A");
  EXPECT_EQ(file.LastUser, "");
  EXPECT_FALSE(file.LastServerTimestamp || file.ServerCallCount || file.LastServerReset);
  ensureRunData(vorlu);
  EXPECT_EQ(shown().size(), 4u);
}

TEST_F(RunDataTest, WritesTheKeysOfEachSelector) {
  const struct {
    Selector selector;
    std::string changed;  // keys as they stand afterwards, those that differ from before
  } cases[] = {
      {Selector::deferralUsed, "DeferCount=0 LastRun=now UserDeferred=1"},
      {Selector::deferralNotApplicable, "DeferCount=N/A LastRun=now UserDeferred=1"},
      {Selector::resetDeferralsAndRun, "DeferCount=5 LastRun=now"},
      {Selector::resetDeferrals, "DeferCount=5"},
      {Selector::lastCache, "LastCache=now"},
      {Selector::lastKeyPrompt, "LastKeyPrompt=now"},
      {Selector::currentRunType, "CurrentRunType=hourlyUpdateCheck"},
      {Selector::lastIconCheck, "LastIconCheck=now"},
      {Selector::lastCompliant, "LastCompliant=some date"},
      {Selector::lastReport, "LastReport=now"},
      {Selector::lastUser, "LastUser=alice"},
      {Selector::secretsTimestamp, "SecretsTimestamp=now"},
      {Selector::lastServerTimestamp, "LastServerTimestamp=now"},
      {Selector::serverCallCount, "ServerCallCount=3"},
      {Selector::lastServerReset, "LastServerReset=now"},
  };
  const auto keys = [](const RunDataFile& file) {
    std::map<std::string, std::string> texts;
    const auto text = [&](const char* key, const auto& value) {
      if constexpr (requires { value->size(); }) {
        if (value) texts[key] = *value;
      } else {
        if (value) texts[key] = static_cast<std::int64_t>(*value) == start ? "now" : std::to_string(*value);
      }
    };
    text("DeferCount", file.DeferCount), text("LastRun", file.LastRun), text("UserDeferred", file.UserDeferred);
    text("LastCache", file.LastCache), text("LastKeyPrompt", file.LastKeyPrompt);
    text("CurrentRunType", file.CurrentRunType), text("LastIconCheck", file.LastIconCheck);
    text("LastCompliant", file.LastCompliant), text("LastReport", file.LastReport), text("LastUser", file.LastUser);
    text("SecretsTimestamp", file.SecretsTimestamp), text("LastServerTimestamp", file.LastServerTimestamp);
    text("ServerCallCount", file.ServerCallCount), text("LastServerReset", file.LastServerReset);
    return texts;
  };
  for (const auto& [selector, changed] : cases) {
    RunDataFile before;
    before.DeferCount = "1";
    before.UserDeferred = false;
    before.LastRun = 7;
    store(before);
    Vorlu fresh(mac.platform(), site);
    fresh.runData.deferralLimitText = "5";
    fresh.runData.currentRunType = "hourlyUpdateCheck";
    fresh.runData.lastCompliantText = "some date";
    fresh.runData.serverCallCount = 3;
    updateRunData(fresh, selector);
    std::string difference;
    const auto old = keys(before);
    for (const auto& [key, value] : keys(stored())) {
      if (old.contains(key) && old.at(key) == value) continue;
      difference += (difference.empty() ? "" : " ") + key + "=" + value;
    }
    EXPECT_EQ(difference, changed) << static_cast<int>(selector);
  }
}

TEST_F(RunDataTest, SpreadsTheNextAttemptOver17Minutes) {
  store({});
  std::set<std::int64_t> seen;
  for (int attempt = 0; attempt < 60; ++attempt) {
    updateRunData(vorlu, Selector::nextUpdateAttempt);
    const std::int64_t wait = *stored().NextUpdateAttempt - start;
    EXPECT_TRUE(wait >= 3780 && wait <= 4800 && wait % 60 == 0) << wait;
    seen.insert(wait);
  }
  EXPECT_GT(seen.size(), 10u);
}

TEST_F(RunDataTest, ReadsAKeyOnceAndCountsOnFromThere) {
  RunDataFile file;
  file.LastReport = 11;
  file.DeferCount = "+2";
  store(file);
  EXPECT_EQ(vorlu.runData.kept(&RunDataFile::LastReport), 11);
  updateRunData(vorlu, Selector::lastReport);
  EXPECT_EQ(vorlu.runData.kept(&RunDataFile::LastReport), 11);
  EXPECT_EQ(vorlu.runData.kept(&RunDataFile::LastRun), 0);
  EXPECT_EQ(vorlu.runData.kept(&RunDataFile::CurrentRunType), "N/A");
  for (const char* left : {"1", "0", "-1"}) {
    updateRunData(vorlu, Selector::deferralUsed);
    EXPECT_EQ(stored().DeferCount, left);
  }
  const struct {
    const char* text;
    std::optional<std::int64_t> number;
  } cases[] = {{"7", 7}, {"-3", -3}, {"+-3", {}}, {"", {}}, {"N/A", {}}, {"3 ", {}}, {"99999999999999999999", {}}};
  for (const auto& [text, number] : cases) EXPECT_EQ(parseCount(text), number) << text;
}

TEST_F(RunDataTest, LeavesWhatItCannotLoadAlone) {
  for (const char* content : {"garbage", "", "<plist><array/></plist>"}) {
    mac.write(paths::runData, content);
    mac.console.clear();
    updateRunData(vorlu, Selector::lastReport);
    EXPECT_THAT(shown(), ElementsAre("Error: Failed to load run data file, could not update run data"));
    EXPECT_EQ(mac.read(paths::runData), content);
    EXPECT_EQ(Vorlu(mac.platform(), site).runData.kept(&RunDataFile::LastReport), 0);
  }
}

TEST_F(RunDataTest, AFullDiskLosesNothing) {
  RunDataFile file;
  file.DeferCount = "2";
  store(file);
  const std::string before = mac.read(paths::runData);
  mac.files.failWritesFrom(1);
  updateRunData(vorlu, Selector::deferralUsed);
  mac.files.heal();
  EXPECT_EQ(mac.read(paths::runData), before);
  EXPECT_THAT(shown(), testing::Contains("Error: Could not update run data").Times(3));
}

TEST_F(RunDataTest, EndsWhenStateCannotBeMade) {
  mac.files.failWritesFrom(1);
  EXPECT_EQ(statusOf([this] { updateRunData(vorlu, Selector::lastReport); }), 1);
  EXPECT_THAT(shown(), testing::Contains("Error: The run directory could not be created. Please contact "
                                         "support@example.com for assistance"));
  EXPECT_THAT(shown(), testing::Contains("Exiting..."));
}

struct RunTypeTest : RunDataTest {
  static Command agentSearch() {
    Command search;
    search.program = "/usr/bin/pgrep";
    search.arguments = {"-x", "vorlu"};
    return search;
  }
  void leaveBehind(const std::string& type, const std::string& parent) {
    RunDataFile file;
    file.CurrentRunType = type;
    store(file);
    WatchReceiptData receipt;
    receipt.parentPID = parent;
    mac.write(paths::watchReceipt, encodePropertyList(receipt));
  }
};

TEST_F(RunTypeTest, AloneItClearsWhatACrashLeft) {
  leaveBehind("scheduledUpdateRequired", "77");
  setCurrentRunType(vorlu, "manualUpdateCheck");
  EXPECT_EQ(stored().CurrentRunType, "manualUpdateCheck");
  EXPECT_FALSE(mac.exists(paths::watchReceipt));
  setCurrentRunType(vorlu, "N/A");
  EXPECT_EQ(mac.processes.commands(), std::vector<std::string>{"/usr/bin/pgrep -x vorlu"});  // asked once
}

TEST_F(RunTypeTest, BesideAnotherAgentItWritesNothing) {
  const Answer answers[] = {{.output = "4000\n4711\n"},
                            {.output = "", .status = 3},
                            {.output = "", .timedOut = true},
                            {.output = "", .starts = false}};
  for (const Answer& answer : answers) mac.processes.on("/usr/bin/pgrep -x vorlu", answer);
  leaveBehind("appInstallRun:firefox", "4711");
  mac.processes.run(agentSearch());  // the answer of a Mac without another agent
  for (std::size_t other = 0; other < std::size(answers); ++other) {
    Vorlu second(mac.platform(), site);
    setCurrentRunType(second, "N/A");
    EXPECT_EQ(second.modes.standing, Standing::beside) << other;
    EXPECT_EQ(stored().CurrentRunType, "appInstallRun:firefox");
    EXPECT_TRUE(mac.exists(paths::watchReceipt));
  }
}

TEST_F(RunTypeTest, EndsARunOnce) {
  store({});
  EXPECT_EQ(statusOf([this] { fatalStop(vorlu, "Error: for the log", "Error: for Jamf"); }), 1);
  EXPECT_THAT(shown(), ElementsAre("Error: for the log", "Exiting..."));
  EXPECT_THAT(mac.read(paths::jamfLog), testing::EndsWith(": Error: for Jamf\n"));
  mac.write(paths::jamf, "");
  mac.console.clear();
  mac.processes.on("zsh: /usr/local/jamf/bin/jamf recon", {});
  EXPECT_EQ(statusOf([this] { fatalStop(vorlu, "Error: again"); }), 1);
  EXPECT_THAT(shown(), ElementsAre("Error: again", "Running Jamf Pro inventory update...", "Exiting..."));
}

TEST_F(RunTypeTest, MarksAMissedUpdateOnce) {
  mac.makeFolder(paths::run);
  writeMissedUpdateReceipt(vorlu);
  EXPECT_TRUE(mac.exists(paths::missedUpdate));
  EXPECT_EQ(mac.clock.sleeps(), std::vector<std::chrono::milliseconds>{std::chrono::seconds(40)});
  writeMissedUpdateReceipt(vorlu);
  EXPECT_EQ(mac.clock.sleeps().size(), 1u);
  removeMissedUpdateReceipt(vorlu);
  EXPECT_FALSE(mac.exists(paths::missedUpdate));
  removeMissedUpdateReceipt(vorlu);
  EXPECT_THAT(shown(), ElementsAre("Please wait...", "Waiting to allow any new configuration profiles to install...",
                                   "Update missed receipt already exists", "Removing missed update receipt..."));
}

}  // namespace
}  // namespace vorlu::test
