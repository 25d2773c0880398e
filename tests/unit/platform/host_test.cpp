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
  host(R"({ "consoleUser": "alice", "consoleUID": 501, "cpuType": 12, "osVersion": "14.5.0",
            "serialNumber": "C02SIM00001", "computerName": "Sim Mac", "activeApplications": ["a.b", 5, "c.d"],
            "powerAssertions": {"4711": [{"Process Name": "zoom.us", "AssertionTrueType": "NoDisplaySleepAssertion"},
                                         {"Process Name": "typeless"}]},
            "cameras": [{"id": 35, "inUse": true}, {"id": 36}, {"inUse": true}], "screenShared": false })");
  EXPECT_EQ(platform_.consoleUser.name(), "alice");
  EXPECT_EQ(platform_.consoleUser.uid(), 501u);
  EXPECT_EQ(platform_.device.cpuType(), 12);
  EXPECT_EQ(platform_.device.osVersion(), "14.5.0");
  EXPECT_EQ(platform_.device.serialNumber(), "C02SIM00001");
  EXPECT_EQ(platform_.device.computerName(), "Sim Mac");
  EXPECT_THAT(platform_.applications.active(), ElementsAre("a.b", "c.d"));
  const auto assertions = platform_.power.assertionsByProcess();
  ASSERT_EQ(assertions->at(4711).size(), 1u);
  EXPECT_EQ(assertions->at(4711)[0].processName, "zoom.us");
  const auto cameras = platform_.cameras.list();
  ASSERT_EQ(cameras.size(), 2u);
  EXPECT_TRUE(cameras[0].inUse);
  EXPECT_FALSE(cameras[1].inUse);
  EXPECT_EQ(platform_.focus.screenShared(), false);
  host(R"({"consoleUser": "bob"})");
  EXPECT_EQ(platform_.consoleUser.name(), "bob") << "it is read anew";
}

TEST_F(HostTest, AMacThatCannotAnswer) {
  for (const char* text : {"", "{", "[]", "{}", "null",
                           R"({"consoleUser": 5, "consoleUID": "x", "cpuType": "12", "osVersion": 14, "cameras": "none",
                               "serialNumber": null, "activeApplications": {"a": 1}, "screenShared": "no"})"}) {
    host(text);
    EXPECT_EQ(platform_.consoleUser.name(), "Unknown") << text;
    EXPECT_EQ(platform_.device.cpuType(), std::nullopt) << text;
    EXPECT_EQ(platform_.device.serialNumber(), std::nullopt) << text;
    EXPECT_EQ(platform_.device.osVersion(), "0.0.0") << text;
    EXPECT_THAT(platform_.applications.active(), IsEmpty()) << text;
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
  ASSERT_TRUE(id);
  const auto held = others.assertionsByProcess();
  ASSERT_EQ(held->size(), 1u);
  EXPECT_EQ(held->at(::getpid()).at(0).type, "NoDisplaySleepAssertion");
  platform_.power.releaseAssertion(*id);
  platform_.power.releaseAssertion(*id);
  EXPECT_THAT(*others.assertionsByProcess(), IsEmpty());
  EXPECT_THAT(*mac_.files.list(LinuxPower::folder), IsEmpty());

  const pid_t child = ::fork();
  if (child == 0) {
    const bool made = platform_.power.createNoDisplaySleepAssertion("Dies with it").has_value();
    ::_exit(made ? 0 : 1);
  }
  int status = 1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(mac_.files.list(LinuxPower::folder)->size(), 1u) << "its note is still there";
  EXPECT_THAT(*others.assertionsByProcess(), IsEmpty());
}

TEST_F(HostTest, RunningApplicationsAreProcessesFromBundles) {
  const std::string bundle = "/Applications/Slides.app";
  mac_.addApplication(bundle, "com.example.slides", "1.0");
  mac_.addApplication(bundle + "/Contents/Frameworks/Helper.app", "com.example.helper", "1.0");
  const std::string helper = mac_.root() + bundle + "/Contents/Frameworks/Helper.app/Contents/MacOS/Helper";
  EXPECT_FALSE(platform_.applications.isRunning("com.example.slides"));
  const auto start = [](const std::string& program) {
    std::filesystem::copy_file("/bin/sleep", program, std::filesystem::copy_options::overwrite_existing);
    return LinuxProcesses().launch(commandOf(program, {"60"})).value();
  };
  const pid_t inner = start(helper);
  EXPECT_TRUE(platform_.applications.isRunning("com.example.helper"));
  EXPECT_FALSE(platform_.applications.isRunning("com.example.slides")) << "a helper isn't its host";
  const pid_t outer = start(mac_.root() + bundle + "/Contents/MacOS/Slides");
  EXPECT_TRUE(platform_.applications.isRunning("com.example.slides"));
  EXPECT_FALSE(platform_.applications.isRunning("com.example"));
  ::kill(inner, SIGKILL);
  ::kill(outer, SIGKILL);
}

TEST_F(HostTest, SystemLogHoldsOneLineARecord) {
  platform_.systemLog.record(RecordType::standard, "start", "one");
  platform_.systemLog.record(RecordType::error, "run", "two\nlines");
  platform_.systemLog.record(RecordType::fault, "", "three");
  EXPECT_EQ(
      mac_.read(LinuxSystemLog::path),
      "Default [com.mosk.vorlu:start] one\nError [com.mosk.vorlu:run] two lines\nFault [com.mosk.vorlu:] three\n");
}

}  // namespace
}  // namespace vorlu::test
