#include "tests/support/agent_run.h"
#include "vorlu/install/server_call_limit.h"

namespace vorlu::test {
namespace {

using Count = std::optional<std::int64_t>;

TEST(ServerCalls, TenADay) {
  RunDataFile file;
  const auto after = [&](Count count) { return file.ServerCallCount = count, countWithOneMore(file); };
  EXPECT_EQ(after({}), 1);
  EXPECT_EQ(after(9), 10);
  EXPECT_EQ(after(10), Count());
  const auto expired = [&](Count reset) { return file.LastServerReset = reset, serverCallsExpired(file, 100'000); };
  EXPECT_TRUE(expired({}) && expired(13'600) && expired(100'001) && expired(std::numeric_limits<std::int64_t>::min()));
  EXPECT_FALSE(expired(13'601) || expired(100'000));
}

}  // namespace
}  // namespace vorlu::test
