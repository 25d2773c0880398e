#include "tests/support/agent_run.h"
#include "vorlu/install/install_permission.h"
#include "vorlu/install/server_call_limit.h"
#include "vorlu/install/version_mismatch.h"

namespace vorlu::test {
namespace {

using Names = std::vector<std::string>;

TEST(InstallPermission, ExclusionBeatsAllowance) {
  using enum InstallPermission;
  struct Case {
    Names allowed, excluded;
    InstallPermission verdict;
  };
  for (const Case& c : std::vector<Case>{{{}, {}, allowed},
                                         {{}, {"slides"}, notOnAllowedList},
                                         {{}, {"SlidesServer"}, notOnAllowedList},
                                         {{}, {"draw"}, allowed},
                                         {{"slides"}, {}, allowed},
                                         {{"SlidesServer"}, {"draw"}, allowed},
                                         {{"draw"}, {}, notOnAllowedList},
                                         {{"draw"}, {"slides"}, notOnAllowedList},
                                         {{"slides"}, {"SlidesServer"}, onBothLists},
                                         {{"Slides", "SLIDES"}, {}, notOnAllowedList}})
    EXPECT_EQ(installPermission("slides", "SlidesServer", c.allowed, c.excluded), c.verdict)
        << testing::PrintToString(c.allowed) << testing::PrintToString(c.excluded);
  EXPECT_EQ(installPermission("slides", "", {""}, {}), notOnAllowedList) << "an empty name names nothing";
}

struct ServerCalls : testing::Test, AgentRun {
  ServerCalls() { mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"}); }
  const std::int64_t now = static_cast<std::int64_t>(VirtualClock::defaultStart);
};

TEST_F(ServerCalls, TenADay) {
  using Count = std::optional<std::int64_t>;
  struct Case {
    Count count, reset;
    bool taken;
    std::int64_t countAfter;
    bool resetNow;
  };
  for (const Case& c : std::vector<Case>{{{}, {}, true, 1, true},
                                         {10, {}, true, 1, true},
                                         {{}, now - 5, true, 1, false},
                                         {9, now - 5, true, 10, false},
                                         {10, now - 5, false, 10, false},
                                         {10, now - 86399, false, 10, false},
                                         {10, now - 86400, true, 1, true},
                                         {10, now + 5, true, 1, true}}) {
    mac.clock.set(VirtualClock::defaultStart);
    RunDataFile file;
    file.ServerCallCount = c.count;
    file.LastServerReset = c.reset;
    store(file);
    EXPECT_EQ(takeServerCall(vorlu), c.taken) << testing::PrintToString(c.count);
    EXPECT_EQ(runData().ServerCallCount, c.countAfter) << testing::PrintToString(c.count);
    EXPECT_EQ(runData().LastServerReset, c.resetNow ? now : c.reset) << testing::PrintToString(c.reset);
  }
}

struct VersionMismatch : testing::Test, AgentRun {
  std::string verdict() {
    messages();
    checkForVersionMismatch(vorlu, "/Applications/Slides.app");
    const Lines lines = messages();
    return lines.empty() ? "" : lines.back();
  }
};

TEST_F(VersionMismatch, ComparesByTheMethodOfTheEntry) {
  mac.addApplication("/Applications/Slides.app", "com.example.slides", "2.0");
  CurrentApp& app = vorlu.currentApp;
  app.appName = "Slides";
  app.latestIntelVersion = "1.9";
  EXPECT_EQ(verdict(), "") << "no version for this processor";
  app.latestSiliconVersion = "2.0";
  app.latestVersionMethod = "CFBundleShortVersionString";
  EXPECT_EQ(verdict(), "No version mismatch found");
  app.latestVersion = "2.1";
  EXPECT_EQ(verdict(),
            "Version Mismatch: Slides has CFBundleShortVersionString defined as method and latest version as 2.1, but "
            "the installed latest version does not match CFBundleShortVersionString: 2.0");
  app.latestVersionMethod = "CFBundleVersion";
  EXPECT_THAT(verdict(), testing::EndsWith("does not match CFBundleVersion: Unknown"));
  app.latestVersionMethod = "pkgReceipt";
  EXPECT_EQ(verdict(), "Checking for version mismatches for Slides installed at path: /Applications/Slides.app");
}

}  // namespace
}  // namespace vorlu::test
