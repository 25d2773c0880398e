#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <ctime>

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
      // The agent of the pipeline before may have been ended in the middle, but it may not be alive.
      catalog.back().preInstallScript =
          "f=/private/tmp/pipelines; touch $f; kill -0 $(sed -n '$s/begin //p' $f) 2>/dev/null && echo two >> $f; "
          "echo begin $PPID >> $f; sleep 5";
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
    mac.shell("killall App5; rm -rf /Applications/App*.app(N) /private/tmp/*(N)");
    mac.addApplication("App5", "1.0", "com.example.App5");
    mac.shell("open /Applications/App5.app");
    mac.write("/private/var/db/dialog-answers", "0\n0\n0\n0\n0\n0\n0\n0\n");
    std::string line;
    const char* others[] = {"-u run", "-c App1-id", "-u selfService", "-u check", "-u force", "-u self"};
    for (int agent = 0; agent < 20; ++agent) {
      const bool installs = agent % 4 == 1;
      const std::string form = installs ? fmt::format("-i App{}-id", agent / 4) : others[(agent + agent / 8) % 6];
      line += fmt::format("{{ vorlu {0} >/private/tmp/out{1} 2>&1; echo $? >/private/tmp/status{1} }} & ", form, agent);
    }
    EXPECT_EQ(mac.shell(line + "wait").status, 0);
    EXPECT_THAT(mac.read("/private/tmp/pipelines"), testing::Not(testing::HasSubstr("two")));
    for (int agent = 0; agent < 20; ++agent)  // background work may have been cancelled
      EXPECT_THAT(mac.read(fmt::format("/private/tmp/status{}", agent)),
                  testing::AnyOf("0\n", agent % 4 == 1 ? "0\n" : "143\n"))
          << "round " << round << ": " << mac.read(fmt::format("/private/tmp/out{}", agent));
    for (int app = 0; app + 1 < apps; ++app) EXPECT_EQ(version(app), "2.0") << "round " << round << ", App" << app;
    const auto runData = decodePropertyList<RunDataFile>(mac.read(paths::runData));
    EXPECT_TRUE(runData && runData->CurrentRunType == "N/A");
    EXPECT_EQ(mac.shell("grep -E -B5 'hung|stuck|longer than|initialise. K|already completed|still queued' "
                        "/var/log/Vorlu.log")
                  .output,
              "");  // nobody was taken for a stuck one
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
