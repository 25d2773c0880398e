#include "vorlu/server/reachability.h"

#include <fmt/format.h>

#include "tests/unit/server/server_fixture.h"
#include "vorlu/server/key_material.h"

namespace vorlu::test {
namespace {

using Reachability = ServerFixture;
using ::testing::ElementsAre;

const Lines secondAttempt = {"The Vorlu server was not reachable on the first connection attempt",
                             "Obtaining Vorlu certificates..."};
const std::string noStatus = "Warning: The Vorlu server is not reachable. Could not obtain HTTP status code";
const std::string copyUsed = "Offline Application data will be used";
const std::string noCopy = "Error: No offline data was found for the update. Unable to continue";

TEST_F(Reachability, RefusalIsAnsweredWithFreshKeysOnce) {
  Vorlu& rotated = newRunWithKeys();
  serveInventory(fmt::format(R"({{"label": "live_blueprints", "url": "{}/live", "token": "new"}})", base));
  checkServerReachable(rotated);
  EXPECT_FALSE(rotated.catalog.offlineMode);
  EXPECT_THAT(requests(), ElementsAre("GET /live 401", "GET /secrets 200", "GET /live 200"));
  EXPECT_THAT(logged(), joined(joined(secondAttempt, keysAdded), {"The Vorlu server is reachable"}));

  Vorlu& refused = newRun();
  answer("/live", 401, "{}");
  mac.write(paths::offlineData, "[]");
  checkServerReachable(refused);
  EXPECT_TRUE(refused.catalog.offlineMode);
  EXPECT_THAT(requests(), ElementsAre("GET /live 401", "GET /secrets 200", "GET /live 401"));
  EXPECT_THAT(logged(), joined(joined(secondAttempt, keysAdded),
                               {"Warning: The Vorlu server is not reachable. Status Code: 401", copyUsed}));
  const std::chrono::seconds pause(1);
  EXPECT_THAT(mac.clock.sleeps(), ElementsAre(pause, pause));
}

TEST_F(Reachability, NoNetworkKeepsTheKeys) {
  Vorlu& vorlu = newRunWithKeys();
  server->stop();
  checkServerReachable(vorlu);
  EXPECT_TRUE(vorlu.catalog.offlineMode);
  EXPECT_TRUE(hasKeyMaterial(vorlu));
  EXPECT_THAT(logged(), ElementsAre(noStatus, noCopy));
  EXPECT_THAT(toldJamf(), ElementsAre("Error: The Vorlu server is unreachable and no cached data was found. Unable to "
                                      "continue with the update. Please contact support@example.com for support"));
  EXPECT_FALSE(checkInternetConnection(vorlu));
}

TEST_F(Reachability, KeysAreRefreshedWhenTheServersAreNewer) {
  using enum CertificateRefresh;
  const auto expectRefresh = [this](const char* body, std::int64_t stored, CertificateRefresh outcome,
                                    const Lines& lines, std::size_t sleeps) {
    RunDataFile file;
    file.SecretsTimestamp = stored;
    setRunData(file);
    answer("/timestamp", 200, body);
    const std::size_t sleptBefore = mac.clock.sleeps().size();
    EXPECT_EQ(refreshCertificates(newRun()), outcome) << body;
    EXPECT_EQ(mac.clock.sleeps().size() - sleptBefore, sleeps) << body;
    EXPECT_THAT(logged(), linesThatBegin(lines)) << body;
    EXPECT_EQ(runData().SecretsTimestamp, outcome == done ? static_cast<std::int64_t>(mac.clock.now()) : stored)
        << body;
  };
  const std::string undecoded = "Error: Certificate validation data decode failed  - dataCorrupted";
  const std::string absent = "Warning: Could not obtain the last certificate modification date from the Vorlu server";
  const std::string none =
      "Warning: Could not obtain the last certificate modification timestamp from the Vorlu server";
  expectRefresh(R"({"timestamp": 501})", 500, done, joined({"Updating Vorlu certificates..."}, keysAdded), 0);
  expectRefresh(R"({"timestamp": 500})", 500, notNeeded, {}, 0);
  expectRefresh(R"({"timestamp": 0})", 0, notNeeded, {none}, 1);
  expectRefresh("{}", 0, notNeeded, {absent, absent, none}, 1);
  expectRefresh("<html>", 0, notNeeded, {undecoded, undecoded, none}, 1);

  serve("timestamp.json", R"({"timestamp": 9})");
  answer("/secrets", 500, "{}");
  EXPECT_EQ(refreshCertificates(newRun()), failed);
  EXPECT_EQ(runData().SecretsTimestamp, 0);
}

}  // namespace
}  // namespace vorlu::test
