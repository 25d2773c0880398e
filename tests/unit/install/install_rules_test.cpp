#include "tests/support/agent_run.h"
#include "vorlu/install/install_permission.h"
#include "vorlu/install/server_call_limit.h"

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

}  // namespace
}  // namespace vorlu::test
