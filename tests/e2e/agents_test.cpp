#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <ctime>
#include <sstream>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/run_data.h"

namespace vorlu::e2e {
namespace {

struct Agents : SimulatedMacTest {
  static constexpr int apps = 6;  // the last one is to be updated, the others are to be installed
  Agents() {
    std::vector<AppBlueprints> catalog;
    for (int app = 0; app < apps; ++app) {
      const std::string name = fmt::format("App{}", app);
      const std::string hash = server.pack("zip", name + ".zip", {server.make(name, "2.0")});
      catalog.push_back(entryOf(name, "2.0", "zip", name + ".zip", hash));
      catalog.back().preInstallScript = "echo begin >> /private/tmp/pipelines; sleep 5";
      catalog.back().postInstallScript = "echo end >> /private/tmp/pipelines";
    }
    server.setCatalog(catalog);
    mac.boot();
    EXPECT_EQ(mac.shell("vorlu -u check").status, 0);  // keys and catalog, while the server's time is the Mac's
  }
  void setRate(int rate, int day) {
    mac.setHost("clock", fmt::format(R"({{"real": {}, "mac": {}, "rate": {}}})", std::time(nullptr),
                                     1772532000 + day * 86400, rate));
  }
  std::string version(int app) const { return versionOf(mac.path(fmt::format("/Applications/App{}.app", app))); }

  AppServer server;
  SimulatedMac mac;
};

/// More than one round is worth its time only by hand (VORLU_ROUNDS).
TEST_F(Agents, TwentyAtOnceWorkOneAtATimeAndEnd) {
  setRate(8, 0);
  const char* asked = std::getenv("VORLU_ROUNDS");
  for (int round = 0; round < (asked ? std::atoi(asked) : 1); ++round) {
    mac.shell("rm -rf /Applications/App*.app(N) /private/tmp/*(N)");
    mac.addApplication("App5", "1.0", "com.example.App5");
    std::string line;
    const char* others[] = {"-c App1-id", "-u check", "-u self", "-c App2-id"};
    for (int agent = 0; agent < 20; ++agent) {
      const std::string form = agent % 4 == 1 ? fmt::format("-i App{}-id", agent / 4) : others[(agent + agent / 8) % 4];
      line += fmt::format("{{ vorlu {0} >/private/tmp/out{1} 2>&1; echo $? >/private/tmp/status{1} }} & ", form, agent);
    }
    EXPECT_EQ(mac.shell(line + "wait").status, 0);
    std::istringstream pipelines(mac.read("/private/tmp/pipelines"));
    std::string previous = "end", now;
    for (; pipelines >> now; previous = now) EXPECT_NE(now, previous) << "two pipelines at once";
    for (int agent = 0; agent < 20; ++agent)
      EXPECT_EQ(mac.read(fmt::format("/private/tmp/status{}", agent)), "0\n")
          << "round " << round << ": " << mac.read(fmt::format("/private/tmp/out{}", agent));
    for (int app = 0; app + 1 < apps; ++app) EXPECT_EQ(version(app), "2.0") << "round " << round << ", App" << app;
    const auto runData = decodePropertyList<RunDataFile>(mac.read(paths::runData));
    EXPECT_TRUE(runData && runData->CurrentRunType == "N/A");
    EXPECT_EQ(mac.shell("grep -B5 Killing /var/log/Vorlu.log").output, "");  // nobody was taken for a stuck one
  }
}

TEST_F(Agents, AStuckOneIsEnded) {
  setRate(15, 0);
  mac.shell(
      "vorlu -i App1-id &>/private/tmp/out & until [ -s /private/tmp/pipelines ]; do sleep 1; done; kill -STOP $!");
  setRate(60, 1);
  const Outcome outcome = mac.shell("vorlu -i App2-id");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, ::testing::HasSubstr("Cancelling install and killing duplicate process..."));
  EXPECT_EQ(version(2), "2.0") << outcome.output;
  EXPECT_EQ(mac.run({"/usr/bin/pgrep", "-x", "vorlu"}).output, "");
}

}  // namespace
}  // namespace vorlu::e2e
