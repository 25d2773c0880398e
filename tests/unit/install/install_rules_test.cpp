#include "tests/support/agent_run.h"
#include "vorlu/install/install_permission.h"
#include "vorlu/install/server_call_limit.h"
#include "vorlu/install/version_mismatch.h"

namespace vorlu::test {
namespace {

using Names = std::vector<std::string>;
using Count = std::optional<std::int64_t>;

TEST(InstallPermission, ExclusionBeatsAllowance) {
  using enum InstallPermission;
  const auto verdict = [](const Names& allow, const Names& exclude) {
    return installPermission("slides", "SlidesServer", allow, exclude);
  };
  for (const Names& ours : {Names{"slides"}, Names{"draw", "SlidesServer"}}) {
    EXPECT_EQ(verdict(ours, {}), allowed);
    EXPECT_EQ(verdict(ours, ours), onBothLists);
    EXPECT_EQ(verdict({}, ours), notOnAllowedList);
    EXPECT_EQ(verdict({"draw"}, ours), notOnAllowedList);
  }
  EXPECT_EQ(verdict({}, {"draw", "Slides"}), allowed);
  EXPECT_EQ(verdict({"draw", "Slides"}, {}), notOnAllowedList) << "case counts";
  EXPECT_EQ(installPermission("slides", "", {""}, {}), notOnAllowedList) << "an empty name names nothing";
}

TEST(ServerCalls, TenADay) {
  RunDataFile file;
  const auto after = [&](Count count) { return file.ServerCallCount = count, countWithOneMore(file); };
  EXPECT_EQ(after({}), 1);
  EXPECT_EQ(after(9), 10);
  EXPECT_EQ(after(10), Count());
  const auto expired = [&](Count reset) { return file.LastServerReset = reset, serverCallsExpired(file, 100'000); };
  EXPECT_TRUE(expired({}) && expired(13'600) && expired(100'001));
  EXPECT_FALSE(expired(13'601) || expired(100'000));
}

struct VersionMismatch : testing::Test, AgentRun {
  std::string verdict() {
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
  EXPECT_THAT(verdict(), testing::EndsWith("does not match CFBundleShortVersionString: 2.0"));
  app.latestVersionMethod = "CFBundleVersion";
  EXPECT_THAT(verdict(), testing::EndsWith("does not match CFBundleVersion: Unknown"));
  app.latestVersionMethod = "pkgReceipt";
  EXPECT_EQ(verdict(), "Checking for version mismatches for Slides installed at path: /Applications/Slides.app");
}

}  // namespace
}  // namespace vorlu::test
