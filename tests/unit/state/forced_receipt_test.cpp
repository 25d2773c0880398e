#include "vorlu/state/forced_receipt.h"

#include "tests/support/agent_run.h"
#include "vorlu/policy/forced_update.h"

namespace vorlu::test {
namespace {

using namespace std::string_literals;
using Number = std::optional<std::int64_t>;
const std::string path = forcedReceiptPath("Slides");

struct ForcedReceipt : testing::Test, AgentRun {
  ReceiptData load(const std::string& bytes) {
    mac.write(path, bytes);
    return loadForcedReceipt(mac.files, path);
  }
};

TEST_F(ForcedReceipt, EachKeyIsReadByItself) {
  const auto expectRead = [this](const std::string& bytes, std::int64_t grace, Number deferrals, std::int64_t period) {
    const ReceiptData receipt = load(bytes);
    EXPECT_EQ(graceMinutesOf(receipt), grace) << bytes;
    EXPECT_EQ(deferralsOf(receipt), deferrals) << bytes;
    EXPECT_EQ(periodMinutesOf(receipt), period) << bytes;
  };
  const std::string grace = "<key>gracePeriod</key><string>30</string>";
  const std::string period = "<key>deferralPeriod</key><integer>5</integer>";
  expectRead(plistOf(grace + "<key>deferrals</key><string>-3</string>" + period), 30, -3, 5);
  expectRead(plistOf(grace + "<key>deferrals</key><integer>3</integer>" + period), 30, {}, 5);
  expectRead(plistOf("<key>gracePeriod</key><string>0</string><key>deferrals</key><string>many</string>"), 15, {}, 60);
  expectRead(plistOf("<key>deferrals</key><string>1</string><key>deferralPeriod</key><string>5</string>"), 15, 1, 60);
  for (const std::string& bytes : {"<plist version=\"1.0\"><array><string>3</string></array></plist>"s,
                                   plistOf(grace).substr(0, 40), "bplist00\x01\x02\x00\x00"s, ""s})
    expectRead(bytes, 15, {}, 60);
}

TEST_F(ForcedReceipt, TheNextPromptComesAfterThePeriod) {
  const std::int64_t huge = std::numeric_limits<std::int64_t>::max();
  const auto elapsed = [](Number lastRun, Number period, std::int64_t now) {
    return deferralPeriodElapsed({"15", "1", period, lastRun}, now);
  };
  EXPECT_TRUE(elapsed({}, 60, 0) && elapsed(1000, 1, 1061) && elapsed(1000, {}, 4601) && elapsed(1000, -5, 1000));
  EXPECT_FALSE(elapsed(1000, 1, 1060) || elapsed(1000, {}, 4600) || elapsed(1000, huge, 5000) ||
               elapsed(huge, huge, 9));
}

TEST_F(ForcedReceipt, AChangeKeepsWhatTheAdministratorWrote) {
  for (const std::string& bytes :
       {plistOf("<key>deferrals</key><integer>4</integer><key>x</key><string>A</string>"), "no list"s}) {
    ReceiptData receipt = load(bytes);
    receipt.lastRun = 77;
    updateReceipt(vorlu, path, receipt);
    EXPECT_EQ(loadForcedReceipt(mac.files, path).lastRun, 77);
    EXPECT_EQ(mac.read(path).find("<integer>4</integer>") == std::string::npos, bytes == "no list") << mac.read(path);
  }
  updateReceipt(vorlu, forcedReceiptPath("taken back"), {});
  EXPECT_FALSE(mac.exists(forcedReceiptPath("taken back")));
  mac.files.failWrite(1);
  updateReceipt(vorlu, path, {});
  EXPECT_THAT(messages(),
              testing::ElementsAre(testing::StartsWith("Error: Could not update the forced update receipt")));
}

}  // namespace
}  // namespace vorlu::test
