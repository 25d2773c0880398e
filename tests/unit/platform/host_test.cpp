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

using testing::ElementsAre;
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

TEST_F(HostTest, AnswersComeFromTheHostFile) {
  host(R"({ "consoleUser": "alice", "activeApplications": ["a.b", 5, "c.d"],
            "powerAssertions": {"4711": [{"Process Name": "zoom.us", "AssertionTrueType": "NoDisplaySleepAssertion"},
                                         {"Process Name": "typeless"}]},
            "cameras": [{"id": 35, "inUse": true}, {"id": 36}, {"inUse": true}] })");
  EXPECT_THAT(platform_.applications.active(), ElementsAre("a.b", "c.d"));
  EXPECT_EQ(platform_.power.assertionsByProcess()->at(4711).size(), 1u);
  const auto cameras = platform_.cameras.list();
  ASSERT_EQ(cameras.size(), 2u);
  EXPECT_TRUE(cameras[0].inUse && !cameras[1].inUse);
  EXPECT_EQ(platform_.consoleUser.name(), "alice");
  host(R"({"consoleUser": "bob"})");
  EXPECT_EQ(platform_.consoleUser.name(), "bob") << "it is read anew";
}

TEST_F(HostTest, AMacThatCannotAnswer) {
  for (const char* text : {"", "{", "[]",
                           R"({"consoleUser": 5, "consoleUID": "x", "cpuType": "12", "osVersion": 14, "cameras": "none",
                               "serialNumber": null, "activeApplications": {"a": 1}, "screenShared": "no"})"}) {
    host(text);
    EXPECT_EQ(platform_.consoleUser.name(), "Unknown") << text;
    EXPECT_EQ(platform_.device.cpuType(), std::nullopt) << text;
    EXPECT_EQ(platform_.device.serialNumber(), std::nullopt) << text;
    EXPECT_THAT(platform_.cameras.list(), IsEmpty()) << text;
    EXPECT_EQ(platform_.focus.screenShared(), std::nullopt) << text;
    EXPECT_FALSE(platform_.power.assertionsByProcess()) << text;
  }
}

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
