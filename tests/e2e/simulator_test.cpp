#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "tests/e2e/simulated_mac.h"

namespace vorlu::e2e {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Any program will do where the agent isn't what is tested.
const std::string noAgent = "/usr/bin/true";

/// A booted Mac without an agent.
class SimulatorTest : public SimulatedMacTest {
 protected:
  void SetUp() override {
    SimulatedMacTest::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    mac_.emplace(noAgent);
    mac_->boot();
  }

  SimulatedMac& mac() { return *mac_; }

  void open(const std::string& application) {
    const Outcome opened = mac().run({"open", "-a", application}, "alice");
    ASSERT_EQ(opened.status, 0) << opened.output;
  }

  /// The name as it stands in the script, within double quotes.
  Outcome quit(const std::string& application) {
    const std::string script =
        "set appName to \"{}\"\n\ntell application appName\n\nwith timeout of 5 seconds\n\nquit\n\nend timeout\n\nend "
        "tell";
    return mac().run({"launchctl", "asuser", "501", "osascript", "-e", fmt::format(fmt::runtime(script), application)});
  }

  bool isRunning(const std::string& name) { return mac().run({"pgrep", "-f", "/Contents/MacOS/" + name}).status == 0; }

 private:
  std::optional<SimulatedMac> mac_;
};

std::string processNamespace(const std::string& pid) {
  std::error_code error;
  return fs::read_symlink("/proc/" + pid + "/ns/pid", error).string();
}

// Process ids of this machine that live in the namespace.
std::vector<std::string> processesIn(const std::string& name) {
  std::vector<std::string> ids;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string id = entry.path().filename();
    if (processNamespace(id) == name) ids.push_back(id);
  }
  return ids;
}

TEST_F(SimulatorTest, NothingOfTheMachineIsInReach) {
  const test::TemporaryFolder outside;
  const std::string secret = outside / "/secret";
  test::writeFile(secret, "outside");
  for (const std::string& attempt :
       {"cat '" + secret + "'", "cat '/.linux/.." + secret + "'", "cat '/proc/1/root" + secret + "'",
        std::string("cat /etc/machine-id /etc/debian_version"), std::string("touch /.linux/new"),
        std::string("rm /.linux/bin/zsh"), std::string("/.linux/bin/mount -o remount,rw,bind /.linux"),
        std::string("/.linux/bin/mount -t tmpfs none /Volumes"), std::string("touch /.mac/pid"),
        std::string("/.linux/bin/mknod /tmp/disk b 254 0 && cat /tmp/disk"),
        std::string("echo 1 > /proc/sys/kernel/sysrq")})
    EXPECT_NE(mac().shell(attempt).status, 0) << attempt;
}

TEST_F(SimulatorTest, ProcessesAreFoundByTheirWholeName) {
  const std::string longName = "Photo Editor Professional 2026";
  const std::string sibling = "Photo Editor Professional 2027";  // Linux cuts both to the same 15 characters
  for (const auto& name : {longName, sibling}) {
    mac().addApplication(name, "1.0", "com.example.photo");
    open(name);
  }
  mac().write("/usr/local/bin/a-long-named-background-script", "#!/bin/bash\nwhile :; do sleep 0.05; done\n");
  fs::permissions(mac().path("/usr/local/bin/a-long-named-background-script"), fs::perms(0755));
  ASSERT_EQ(mac().shell("a-long-named-background-script < /dev/null &> /dev/null &!").status, 0);

  const auto expectStatus = [&](int status, const std::vector<std::string>& command) {
    EXPECT_EQ(mac().run(command).status, status) << fmt::format("{}", fmt::join(command, " "));
  };
  expectStatus(0, {"pgrep", "-x", longName});
  expectStatus(1, {"pgrep", "-x", "Photo Editor Pr"});
  expectStatus(1, {"pgrep", "-x", "Photo Editor Professional"});
  expectStatus(0, {"pgrep", "Photo Editor Professional"});
  expectStatus(0, {"pgrep", "-x", "a-long-named-background-script"});
  expectStatus(1, {"pgrep", "-x", "pgrep"});
  expectStatus(1, {"killall", "Photo Editor Professional"});
  expectStatus(0, {"killall", longName});
  expectStatus(0, {"pgrep", "-x", sibling});
  expectStatus(0, {"killall", "a-long-named-background-script"});
  // A search that its own parents would match finds none of them.
  EXPECT_EQ(mac().shell("pgrep -f no-such-process-anywhere; print $?").output, "1\n");
}

TEST_F(SimulatorTest, AnApplicationLivesUntilItIsToldToQuit) {
  const std::string name = R"(Mike's "Best" \ App)";
  mac().addApplication(name, "1.0", "com.example.app");
  open("/Applications/" + name + ".app");
  open(name);
  EXPECT_EQ(mac().shell("ps -axo command= | grep -c '[C]ontents/MacOS'").output, "1\n") << "opened twice, started once";
  EXPECT_EQ(quit(R"(Mike's \"Best\" \\ App)").status, 0);
  EXPECT_NE(mac().shell("pgrep -f Contents/MacOS").status, 0);
  EXPECT_THAT(quit("Nothing Of This Name").output, HasSubstr("(-1728)"));

  // An application may ignore the quit; a faster clock shortens the wait for it.
  const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  mac().setHost("clock", fmt::format(R"({{"real": {}, "mac": 1772532000, "rate": 100}})", now));
  mac().addApplication("Slides", "1.0", "com.example.slides");
  mac().write("/Applications/Slides.app/Contents/Resources/ignore-quit", "");
  open("Slides");
  const Outcome asked = quit("Slides");
  EXPECT_EQ(asked.status, 1);
  EXPECT_THAT(asked.output, HasSubstr("AppleEvent timed out. (-1712)"));
  EXPECT_TRUE(isRunning("Slides"));
  mac().run({"killall", "Slides"});
  EXPECT_FALSE(isRunning("Slides"));
}

TEST_F(SimulatorTest, ShutdownLeavesNoProcess) {
  mac().addApplication("Slides", "1.0", "com.example.slides");
  mac().write("/Applications/Slides.app/Contents/Resources/ignore-quit", "");
  open("Slides");
  const std::string first = mac().read("/.mac/pid");
  const std::string name = processNamespace(first.substr(0, first.find(' ')));
  ASSERT_GE(processesIn(name).size(), 2U);

  mac().shutdown();
  EXPECT_THAT(processesIn(name), ElementsAre());
  EXPECT_THAT(mac().run({"true"}).output, HasSubstr("isn't booted"));
  mac().shutdown();
  mac().boot();
  EXPECT_FALSE(isRunning("Slides"));
}

}  // namespace
}  // namespace vorlu::e2e
