#include "vorlu/state/run_data.h"

#include <limits>

#include "tests/support/agent_run.h"
#include "vorlu/state/receipts.h"
#include "vorlu/state/run_type.h"

namespace vorlu::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Selector = RunDataSelector;

struct RunDataTest : testing::Test, AgentRun {
  RunDataTest() { mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"}); }
};

TEST_F(RunDataTest, CreatesFolderAndFile) {
  mac.consoleUser.user = "loginwindow";
  mac.files.remove(paths::run);
  ensureRunData(vorlu);
  EXPECT_THAT(shown(), ElementsAre("The run directory was not found. Attempting to create it...",
                                   "Successfully created the run directory", "The run data plist was not found",
                                   "Setting up the Deferrals Plist..."));
  EXPECT_EQ(mac.files.info(paths::run)->mode, 0700u);
  EXPECT_EQ(mac.files.info(paths::runData)->mode, 0640u);
  const RunDataFile file = runData();
  EXPECT_EQ(file.DeferCount, "2");
  EXPECT_EQ(file.CurrentRunType, "N/A");
  EXPECT_EQ(file.LastUser, "");
  EXPECT_FALSE(file.LastServerTimestamp || file.ServerCallCount || file.LastServerReset);
  ensureRunData(vorlu);
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(RunDataTest, ReadsAKeyOnceAndCountsOnFromThere) {
  RunDataFile file;
  file.LastReport = 11;
  file.DeferCount = "+2";
  store(file);
  EXPECT_EQ(vorlu.runData.kept(&RunDataFile::LastReport), 11);
  updateRunData(vorlu, Selector::lastReport);
  EXPECT_EQ(vorlu.runData.kept(&RunDataFile::LastReport), 11);
  EXPECT_EQ(vorlu.runData.kept(&RunDataFile::CurrentRunType), "N/A");
  for (const char* left : {"1", "0", "-1"}) {
    updateRunData(vorlu, Selector::deferralUsed);
    EXPECT_EQ(runData().DeferCount, left);
  }
  vorlu.runData.deferCountRemaining() = std::numeric_limits<std::int64_t>::min();  // as a damaged file says
  updateRunData(vorlu, Selector::deferralUsed);
  EXPECT_EQ(runData().DeferCount, "-9223372036854775808");
  EXPECT_EQ(parseCount("-3"), -3);
  for (const char* text : {"+-3", "", "N/A", "3 ", "99999999999999999999"})
    EXPECT_EQ(parseCount(text), std::nullopt) << text;
}

TEST_F(RunDataTest, LeavesWhatItCannotLoadOrReplaceAlone) {
  for (const char* content : {"garbage", "", "<plist><array/></plist>"}) {
    mac.write(paths::runData, content);
    updateRunData(vorlu, Selector::lastReport);
    EXPECT_THAT(shown(), ElementsAre("Error: Failed to load run data file, could not update run data"));
    EXPECT_EQ(mac.read(paths::runData), content);
  }
  store({});
  const std::string before = mac.read(paths::runData);
  mac.files.failWritesFrom(1);
  updateRunData(vorlu, Selector::lastReport);
  EXPECT_EQ(mac.read(paths::runData), before);
  EXPECT_THAT(shown(), testing::Contains("Error: Could not update run data"));

  mac.files.remove(paths::run);
  EXPECT_EQ(endOf([this] { updateRunData(vorlu, Selector::lastReport); }), 1);
  EXPECT_THAT(shown(), testing::Contains("Error: The run directory could not be created. Please contact "
                                         "support@example.com for assistance"));
}

struct RunTypeTest : RunDataTest {
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
  EXPECT_EQ(runData().CurrentRunType, "manualUpdateCheck");
  EXPECT_FALSE(mac.exists(paths::watchReceipt));
  setCurrentRunType(vorlu, "N/A");
  EXPECT_EQ(tools(), Lines{"/usr/bin/pgrep -x vorlu"});  // asked once
}

TEST_F(RunTypeTest, AloneItLeavesWhatALivingRunPublishes) {
  mac.processes.addProcess(77);
  for (const auto& [receipt, stays] : {std::pair("77", true), {"garbled", false}, {"", false}}) {
    leaveBehind("N/A", receipt);
    if (*receipt == '\0') mac.write(paths::watchReceipt, "no property list");
    clearTracesOfCrash(vorlu);
    EXPECT_EQ(mac.exists(paths::watchReceipt), stays) << receipt;
  }
  mac.files.failWritesFrom(1);
  EXPECT_EQ(endOf([this] { writeMissedUpdateReceipt(vorlu); }), 1);
  EXPECT_FALSE(mac.exists(paths::missedUpdate));
}

TEST_F(RunTypeTest, BesideAnotherAgentItWritesNothing) {
  const Answer answers[] = {{.output = "4000\n4711\n"}, {.status = 3}, {.timedOut = true}, {.starts = false}};
  for (const Answer& answer : answers) mac.processes.on("/usr/bin/pgrep -x vorlu", answer);
  mac.processes.on("/bin/ps -Aww -o pid= -o ppid= -o user= -o etime= -o comm=",
                   {.output = "4711 1 root 05:00 vorlu\n"});
  leaveBehind("appInstallRun:firefox", "4711");
  mac.processes.run(commandOf("/usr/bin/pgrep", {"-x", "vorlu"}));  // the answer of a Mac without another agent
  for (std::size_t other = 0; other < std::size(answers); ++other) {
    Vorlu second(mac.platform(), site);
    setCurrentRunType(second, "N/A");
    EXPECT_EQ(second.modes.standing, Standing::beside) << other;
    EXPECT_EQ(runData().CurrentRunType, "appInstallRun:firefox");
    EXPECT_TRUE(mac.exists(paths::watchReceipt));
  }
}

TEST_F(RunTypeTest, EndsARunOnce) {
  store({});
  EXPECT_EQ(endOf([this] { fatalStop(vorlu, "Error: for the log", "Error: for Jamf"); }), 1);
  EXPECT_THAT(shown(), ElementsAre("Error: for the log", "Exiting..."));
  EXPECT_THAT(mac.read(paths::jamfLog), testing::EndsWith(": Error: for Jamf\n"));
  mac.write(paths::jamf, "");
  mac.processes.on("zsh: /usr/local/jamf/bin/jamf recon", {});
  EXPECT_EQ(endOf([this] { fatalStop(vorlu, "Error: again"); }), 1);
  EXPECT_THAT(shown(), ElementsAre("Error: again", "Running Jamf Pro inventory update...", "Exiting..."));
}

}  // namespace
}  // namespace vorlu::test
