#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/run_data.h"

namespace vorlu::e2e {
namespace {

using ::testing::Contains;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

struct InstallCommand : SimulatedMacTest {
  RunDataFile runData() { return *decodePropertyList<RunDataFile>(mac.read(paths::runData)); }
  std::string version(const std::string& name) { return versionOf(mac.path(fmt::format("/Applications/{}.app", name))); }
  AppBlueprints offer(const std::string& name, const std::string& type) {
    const std::string file = name + "." + type;
    return entryOf(name, "2.0", type, file, server.pack(type, file, {server.make(name, "2.0")}));
  }
  Outcome install(const std::string& option, const std::string& identifier) {
    Outcome outcome = mac.run({"/usr/local/bin/vorlu", option, identifier});
    EXPECT_EQ(runData().CurrentRunType, "N/A") << identifier;
    EXPECT_FALSE(std::filesystem::exists(mac.path(paths::watchReceipt))) << identifier;
    return outcome;
  }

  SimulatedMac mac;
  std::atomic<int> catalogRequests = 0;
  AppServer server{[this](const refserver::Request& request, refserver::Response&) {
                     if (request.path.starts_with("/catalog/")) ++catalogRequests;
                   },
                   mac.path("/private/var/db/vorlu-host.json")};
};

TEST_F(InstallCommand, InstallsEachKindAndRefusesWhatItMust) {
  AppBlueprints package = offer("Notes", "pkg");
  package.sourceItems.reset();
  AppBlueprints barred = offer("Chess", "zip");
  barred.installsAllowed = false;
  server.setCatalog({offer("Slides", "zip"), offer("Draw", "dmgWithEULA"), package, offer("Mail", "zip"), barred});
  mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
            R"(<plist version="1.0"><dict><key>GeneralOptions</key><dict>
                 <key>excludedAppInstalls</key><array><string>Mail-server</string></array></dict></dict></plist>)");
  mac.boot();
  EXPECT_EQ(install("-i", "Slides-id").status, 0);
  EXPECT_EQ(install("--install", "Notes-legacy").status, 0);
  EXPECT_EQ(install("-i", "Slides-id").status, 1) << "it is there";
  EXPECT_EQ(version("Slides") + version("Notes"), "2.02.0");
  for (const std::string& call : mac.toolCalls()) EXPECT_THAT(call, Not(testing::StartsWith("Dialog")));

  // one launch question answered by yes, then four prompts closed
  mac.write("/private/var/db/dialog-answers", "0\n0\n0\n0\n0\n");
  const Outcome draw = install("-ip", "Draw-id");
  EXPECT_EQ(draw.status, 0) << draw.output;
  EXPECT_EQ(version("Draw"), "2.0");
  EXPECT_THAT(draw.output, HasSubstr("User clicked Yes. Launching Draw...\n"));
  EXPECT_EQ(mac.shell("pgrep -x Draw | wc -l").output.find_first_of("1"), 0U) << "launched once";
  EXPECT_THAT(mac.shell("ps -o user= -p $(pgrep -x Draw)").output, HasSubstr("alice"));
  for (const auto& [identifier, line] : std::vector<std::pair<std::string, std::string>>{
           {"bogus", "Error: Specified App \"bogus\" was not found in the Vorlu App catalog."},
           {"Mail-id", "Error: Mail was not included in the list of Apps allowed for installation."},
           {"Draw-id", "Draw is already installed at path: /Applications/Draw.app"},
           {"Chess-id", "Error: Chess is not installable via Vorlu"}}) {
    const Outcome refused = install("-ip", identifier);
    EXPECT_EQ(refused.status, 1) << identifier;
    EXPECT_THAT(refused.output, HasSubstr(line));
  }
  EXPECT_EQ(mac.read("/private/var/db/dialog-answers"), "") << "each refusal has shown its prompt";
  EXPECT_EQ(version("Mail") + version("Chess"), "");
  EXPECT_EQ(mac.shell("pgrep -x Dialog").output, "") << "no window is left";
}

TEST_F(InstallCommand, AsksTheServerTenTimesADay) {
  server.setCatalog({offer("Slides", "zip")});
  mac.boot();
  install("-i", "bogus");
  for (int call = 2; call <= 10; ++call) install("-i", "bogus");
  EXPECT_EQ(runData().ServerCallCount, 10);
  const int before = catalogRequests;
  const Outcome eleventh = install("-i", "bogus");
  EXPECT_EQ(eleventh.status, 1);
  EXPECT_THAT(eleventh.output, HasSubstr("Vorlu has reached the maximum allowed server calls for today\n"));
  EXPECT_EQ(catalogRequests, before);
}

TEST_F(InstallCommand, TheTestingCatalogLeavesTheLiveCopyAlone) {
  server.setCatalog({offer("Slides", "zip")});
  server.setTestingCatalog({offer("Draft", "zip")});
  mac.boot();
  EXPECT_EQ(install("-i", "Slides-id").status, 0);
  const std::string copy = mac.read(paths::offlineData);
  EXPECT_EQ(install("-it", "Draft-id").status, 0);
  EXPECT_EQ(version("Draft"), "2.0");
  EXPECT_EQ(install("-it", "Slides-id").status, 1) << "in the live catalog alone";
  EXPECT_EQ(mac.read(paths::offlineData), copy);
  EXPECT_EQ(runData().ServerCallCount, std::nullopt);
}

}  // namespace
}  // namespace vorlu::e2e
