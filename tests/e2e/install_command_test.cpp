#include <fmt/format.h>
#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/run_data.h"

namespace vorlu::e2e {
namespace {

using ::testing::HasSubstr;

struct InstallCommand : SimulatedMacTest {
  RunDataFile runData() { return *decodePropertyList<RunDataFile>(mac.read(paths::runData)); }
  std::string version(const std::string& name) { return versionOf(mac.path("/Applications/" + name + ".app")); }
  AppBlueprints offer(const std::string& name, const std::string& type) {
    const std::string file = name + "." + type;
    return entryOf(name, "2.0", type, file, server.pack(type, file, {server.make(name, "2.0")}));
  }
  /// What the agent says, with its status in front.
  std::string install(const std::string& option, const std::string& identifier) {
    const Outcome outcome = mac.run({"/usr/local/bin/vorlu", option, identifier});
    EXPECT_EQ(runData().CurrentRunType, "N/A") << identifier;
    EXPECT_FALSE(std::filesystem::exists(mac.path(paths::watchReceipt))) << identifier;
    return fmt::format("{} {}", outcome.status, outcome.output);
  }

  SimulatedMac mac;
  std::atomic<int> catalogRequests = 0;
  AppServer server{[this](const refserver::Request& request, refserver::Response&) {
    if (request.path.starts_with("/catalog/")) ++catalogRequests;
  }};
};

TEST_F(InstallCommand, InstallsAndRefusesInFrontOfTheUser) {
  server.setCatalog({offer("Notes", "pkg"), offer("Draw", "dmgWithEULA"), offer("Mail", "zip")});
  mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
            R"(<plist version="1.0"><dict><key>GeneralOptions</key><dict>
                 <key>excludedAppInstalls</key><array><string>Mail-server</string></array></dict></dict></plist>)");
  mac.boot();
  EXPECT_THAT(install("-i", "Notes-legacy"), testing::StartsWith("0 "));
  EXPECT_THAT(mac.read("/private/var/log/tools.log"), Not(HasSubstr("Dialog")));
  mac.write("/private/var/db/dialog-answers", "0\n0\n0\n0\n");
  EXPECT_THAT(install("-ip", "Draw-id"), HasSubstr("User clicked Yes. Launching Draw...\n"));
  EXPECT_EQ(version("Notes") + version("Draw"), "2.02.0");
  EXPECT_EQ(mac.shell("ps -o user= -p $(pgrep -x Draw)").output, "alice\n") << "launched once";
  for (const char* identifier : {"bogus", "Mail-id", "Draw-id"})
    EXPECT_THAT(install("-ip", identifier), testing::StartsWith("1 "));
  EXPECT_EQ(mac.read("/private/var/db/dialog-answers"), "") << "each refusal has shown its prompt";
  EXPECT_EQ(version("Mail") + mac.shell("pgrep -x Dialog").output, "");
}

TEST_F(InstallCommand, AsksTheServerTenTimesADay) {
  server.setCatalog({offer("Slides", "zip")});
  mac.boot();
  for (int call = 1; call <= 10; ++call) install("-i", "bogus");
  EXPECT_EQ(runData().ServerCallCount, 10);
  const int before = catalogRequests;
  EXPECT_THAT(install("-i", "bogus"), HasSubstr("Vorlu has reached the maximum allowed server calls for today\n"));
  EXPECT_EQ(catalogRequests, before);
}

TEST_F(InstallCommand, TheTestingCatalogLeavesTheLiveCopyAlone) {
  server.setCatalog({offer("Slides", "zip")});
  server.setTestingCatalog({offer("Draft", "zip")});
  mac.boot();
  install("-i", "Slides-id");
  const std::string copy = mac.read(paths::offlineData);
  EXPECT_THAT(install("-it", "Draft-id"), testing::StartsWith("0 "));
  EXPECT_THAT(install("-it", "Slides-id"), testing::StartsWith("1 ")) << "in the live catalog alone";
  EXPECT_EQ(version("Slides") + version("Draft"), "2.02.0");
  EXPECT_EQ(mac.read(paths::offlineData), copy);
  EXPECT_EQ(runData().ServerCallCount, std::nullopt);
}

}  // namespace
}  // namespace vorlu::e2e
