#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/simulated_mac.h"

namespace vorlu::e2e {
namespace {

namespace fs = std::filesystem;

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

 private:
  std::optional<SimulatedMac> mac_;
};

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

}  // namespace
}  // namespace vorlu::e2e
