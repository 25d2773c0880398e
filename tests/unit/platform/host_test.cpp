#include "vorlu/platform/linux/linux_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/test_platform.h"
#include "vorlu/platform/linux/linux_platform.h"

namespace vorlu::test {
namespace {

using testing::IsEmpty;

class HostTest : public testing::Test {
 protected:
  void host(const std::string& text) {
    std::filesystem::remove(mac_.root() + LinuxHost::path);
    mac_.write(LinuxHost::path, text);
  }

  TestPlatform mac_;
  LinuxPlatform linux_{mac_.root()};
  Platform& platform_ = linux_.platform();
};

TEST_F(HostTest, AnAssertionIsSeenByOthersAndEndsWithItsProcess) {
  host(R"({"powerAssertions": {}})");
  LinuxPlatform watcher(mac_.root());
  Power& others = watcher.platform().power;
  const auto id = platform_.power.createNoDisplaySleepAssertion("Installing");
  EXPECT_EQ(others.assertionsByProcess()->at(::getpid()).at(0).type, "NoDisplaySleepAssertion");
  platform_.power.releaseAssertion(id.value());
  EXPECT_THAT(*others.assertionsByProcess(), IsEmpty());
  const pid_t child = ::fork();
  if (child == 0) ::_exit(platform_.power.createNoDisplaySleepAssertion("Dies with it") ? 0 : 1);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_EQ(mac_.files.list(LinuxPower::folder)->size(), 1u) << "its note is still there";
  EXPECT_THAT(*others.assertionsByProcess(), IsEmpty());
}

}  // namespace
}  // namespace vorlu::test
