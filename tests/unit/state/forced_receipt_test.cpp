#include "vorlu/state/forced_receipt.h"

#include "tests/support/agent_run.h"
#include "vorlu/policy/forced_update.h"

namespace vorlu::test {
namespace {

using Number = std::optional<std::int64_t>;
const std::string path = forcedReceiptPath("Slides");

struct ForcedReceipt : testing::Test, AgentRun {
  ReceiptData load(const std::string& bytes) {
    mac.write(path, bytes);
    return loadForcedReceipt(mac.files, path);
  }
};

TEST_F(ForcedReceipt, EachKeyIsReadByItselfAndWhatCannotBeReadGrantsNothing) {
  const std::string grace = "<key>gracePeriod</key><string>30</string>";
  const std::string binary("bplist00\x01\x02\x00\x00", 12);
  struct Case {
    std::string bytes;
    std::int64_t graceMinutes;
    Number deferrals, period;
  };
  for (const Case& c : std::vector<Case>{
           {plistOf(grace + "<key>deferrals</key><string>3</string><key>deferralPeriod</key><integer>5</integer>"), 30,
            3, 5},
           {plistOf(grace + "<key>deferrals</key><integer>3</integer>"), 30, {}, {}},
           {plistOf(grace + "<key>deferrals</key><string>-3</string>"), 30, -3, {}},
           {plistOf("<key>gracePeriod</key><string>0</string><key>deferrals</key><string>many</string>"), 15, {}, {}},
           {plistOf("<key>deferrals</key><string>1</string><key>deferralPeriod</key><string>5</string>"), 15, 1, {}},
           {"<plist version=\"1.0\"><array><string>3</string></array></plist>", 15, {}, {}},
           {plistOf(grace).substr(0, 40), 15, {}, {}},
           {binary, 15, {}, {}},
           {"", 15, {}, {}}}) {
    const ReceiptData receipt = load(c.bytes);
    EXPECT_EQ(graceMinutesOf(receipt), c.graceMinutes) << c.bytes;
    EXPECT_EQ(deferralsOf(receipt), c.deferrals) << c.bytes;
    EXPECT_EQ(receipt.deferralPeriod, c.period) << c.bytes;
  }
  const ReceiptData folder = loadForcedReceipt(mac.files, "/Applications");
  EXPECT_EQ(deferralsOf(folder), Number()) << "a directory in its place";
}

TEST_F(ForcedReceipt, TheNextPromptComesAfterThePeriod) {
  struct Case {
    Number lastRun, period;
    std::int64_t now;
    bool elapsed;
  };
  const std::int64_t huge = std::numeric_limits<std::int64_t>::max();
  for (const Case& c : std::vector<Case>{{{}, 60, 0, true},
                                         {1000, 1, 1060, false},
                                         {1000, 1, 1061, true},
                                         {1000, {}, 4600, false},
                                         {1000, {}, 4601, true},
                                         {1000, -5, 1000, true},
                                         {1000, huge, 1'800'000'000, false},
                                         {huge, huge, 1'800'000'000, false}}) {
    const ReceiptData receipt{"15", "1", c.period, c.lastRun};
    EXPECT_EQ(deferralPeriodElapsed(receipt, c.now), c.elapsed) << c.now;
  }
}

TEST_F(ForcedReceipt, AChangeKeepsWhatTheAdministratorWrote) {
  ReceiptData receipt = load(plistOf("<key>deferrals</key><integer>4</integer><key>ticket</key><string>A-17</string>"));
  receipt.lastRun = 77;
  updateReceipt(vorlu, path, receipt);
  EXPECT_THAT(mac.read(path), testing::HasSubstr("A-17"));
  EXPECT_THAT(mac.read(path), testing::HasSubstr("<integer>4</integer>"));
  receipt = load("no list");
  receipt.lastRun = 77;
  updateReceipt(vorlu, path, receipt);
  EXPECT_EQ(loadForcedReceipt(mac.files, path).lastRun, 77);
  mac.files.failWrite(1);
  updateReceipt(vorlu, path, receipt);
  EXPECT_THAT(messages(),
              testing::ElementsAre(testing::StartsWith("Error: Could not update the forced update receipt")));
}

TEST_F(ForcedReceipt, OnlyAMarkCounts) {
  for (const auto& [name, app] :
       std::vector<std::pair<const char*, std::optional<std::string>>>{{"Slides Patch Receipt.plist", "Slides"},
                                                                       {" Patch Receipt.plist", ""},
                                                                       {"Patch Receipt.plist", {}},
                                                                       {"Slides Patch Receipt.plist.bak", {}},
                                                                       {"Slides patch receipt.plist", {}}})
    EXPECT_EQ(markedApp(name), app) << name;
}

TEST_F(ForcedReceipt, NoNameLeavesTheFolderOfTheTask) {
  mac.write(paths::runData, "run data");
  for (const char* app : {"", ".", ".."}) {
    beginCurrentTask(vorlu, app);
    EXPECT_THAT(messages(), testing::ElementsAre(testing::StartsWith("Error creating the App receipt: "))) << app;
  }
  beginCurrentTask(vorlu, "Slides");
  EXPECT_THAT(*mac.files.list(paths::currentTask), testing::ElementsAre("Slides"));
  endCurrentTask(vorlu);
  EXPECT_EQ(mac.read(paths::runData), "run data");
  EXPECT_THAT(*mac.files.list(paths::run), testing::ElementsAre("Downloads", "runData.plist"));
}

}  // namespace
}  // namespace vorlu::test
