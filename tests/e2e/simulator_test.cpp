#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>

#include "tests/e2e/simulated_mac.h"

namespace vorlu::e2e {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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

  Outcome quit(const std::string& application) {
    std::string escaped;
    for (const char c : application) escaped += (c == '"' || c == '\\') ? std::string("\\") + c : std::string(1, c);
    return mac().run({"launchctl", "asuser", "501", "osascript", "-e",
                      fmt::format("set appName to \"{}\"\n\ntell application appName\n\nwith timeout of 5 seconds\n\n"
                                  "quit\n\nend timeout\n\nend tell",
                                  escaped)});
  }

  bool isRunning(const std::string& name) { return mac().run({"pgrep", "-f", "/Contents/MacOS/" + name}).status == 0; }

  // False where all users of the Mac share the id of the one who booted it.
  bool hasRealUsers() { return mac().run({"grep", "-q", "4294967295", "/proc/self/uid_map"}).status == 0; }

  // Sets the Mac's clock going at `rate` from 2026-03-03 10:00:00 UTC.
  void setClock(double rate) {
    const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    mac().setHost("clock", fmt::format(R"({{"real": {}, "mac": 1772532000, "rate": {}}})", now, rate));
  }

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
  const fs::path secret = fs::temp_directory_path() / fmt::format("vorlu-outside.{}", getpid());
  std::ofstream(secret) << "outside";
  const std::vector<std::string> attempts = {
      fmt::format("cat '{}'", secret.string()),
      fmt::format("cat '/.linux/..{}'", secret.string()),
      fmt::format("cat '/proc/1/root{}'", secret.string()),
      "cat /etc/machine-id /etc/debian_version",
      "touch /.linux/new",
      "rm /.linux/bin/zsh",
      "/.linux/bin/mount -o remount,rw,bind /.linux",
      "/.linux/bin/mount -t tmpfs none /Volumes",
      "/.linux/bin/mknod /tmp/disk b 254 0 && cat /tmp/disk",
      "touch /.mac/pid",
      "echo 1 > /proc/sys/kernel/sysrq",
  };
  for (const auto& attempt : attempts) EXPECT_NE(mac().shell(attempt).status, 0) << attempt;
  fs::remove(secret);
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

  struct Case {
    std::vector<std::string> command;
    int status;
  };
  const std::vector<Case> cases = {
      {{"pgrep", "-x", longName}, 0},
      {{"pgrep", "-x", "Photo Editor Pr"}, 1},
      {{"pgrep", "-x", "Photo Editor Professional"}, 1},
      {{"pgrep", "Photo Editor Professional"}, 0},
      {{"pgrep", "-x", "a-long-named-background-script"}, 0},
      {{"pgrep", "-x", "pgrep"}, 1},
      {{"killall", "Photo Editor Professional"}, 1},
      {{"killall", longName}, 0},
      {{"pgrep", "-x", sibling}, 0},
      {{"killall", "a-long-named-background-script"}, 0},
  };
  for (const auto& [command, status] : cases) {
    const Outcome outcome = mac().run(command);
    EXPECT_EQ(outcome.status, status) << fmt::format("{}: {}", fmt::join(command, " "), outcome.output);
  }
  // A search that its own parents would match finds none of them.
  EXPECT_EQ(mac().shell("pgrep -f no-such-process-anywhere; print $?").output, "1\n");
}

TEST_F(SimulatorTest, ApplicationsStartOnceAndLiveUntilTheyAreToldToQuit) {
  for (const std::string name : {"Slides", R"(Mike's "Best" \ App)"}) {
    SCOPED_TRACE(name);
    mac().addApplication(name, "1.0", "com.example.app", {"--binary-plist"});
    open("/Applications/" + name + ".app");
    open(name);
    const Outcome found = mac().shell("ps -axo uid=,command= | grep '[C]ontents/MacOS'");
    EXPECT_EQ(std::count(found.output.begin(), found.output.end(), '\n'), 1) << found.output;
    if (hasRealUsers()) {
      EXPECT_THAT(found.output, StartsWith("  501 "));
    }
    const Outcome ended = quit(name);
    EXPECT_EQ(ended.status, 0) << ended.output;
    EXPECT_NE(mac().shell("pgrep -f Contents/MacOS").status, 0);
    fs::remove_all(mac().path("/Applications/" + name + ".app"));
  }
  EXPECT_EQ(mac().run({"open", "-a", "Nothing Of This Name"}).status, 1);
  EXPECT_THAT(quit("Nothing Of This Name").output, HasSubstr("(-1728)"));
}

TEST_F(SimulatorTest, AnApplicationMayIgnoreTheQuit) {
  struct Case {
    std::vector<std::string> marks;
    bool outlivesQuit, outlivesKillall;
  };
  const std::vector<Case> cases = {
      {{}, false, false},
      {{"ignore-quit"}, true, false},
      {{"ignore-quit", "ignore-terminate"}, true, true},
  };
  setClock(100);
  mac().addApplication("Slides", "1.0", "com.example.slides");
  for (const auto& [marks, outlivesQuit, outlivesKillall] : cases) {
    SCOPED_TRACE(fmt::format("{}", fmt::join(marks, " ")));
    for (const auto& mark : marks) mac().write("/Applications/Slides.app/Contents/Resources/" + mark, "");
    open("Slides");
    const Outcome asked = quit("Slides");
    EXPECT_EQ(asked.status, outlivesQuit ? 1 : 0);
    EXPECT_THAT(asked.output, outlivesQuit ? HasSubstr("AppleEvent timed out. (-1712)") : HasSubstr(""));
    EXPECT_EQ(isRunning("Slides"), outlivesQuit);
    mac().run({"killall", "Slides"});
    EXPECT_EQ(isRunning("Slides"), outlivesKillall);
    mac().run({"killall", "-KILL", "Slides"});
    EXPECT_FALSE(isRunning("Slides"));
  }
}

TEST_F(SimulatorTest, TwoMacsDontSeeEachOther) {
  SimulatedMac other(noAgent);
  other.boot();
  mac().addApplication("Slides", "1.0", "com.example.slides");
  open("Slides");
  mac().write("/private/tmp/here", "");

  EXPECT_EQ(other.run({"pgrep", "-x", "Slides"}).status, 1);
  EXPECT_NE(other.run({"test", "-e", "/tmp/here"}).status, 0);
  other.run({"killall", "-KILL", "Slides"});
  other.shutdown();
  EXPECT_TRUE(isRunning("Slides"));
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

TEST_F(SimulatorTest, WaitsAndAgesFollowTheClock) {
  setClock(3600);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(mac().run({"sleep", "3600"}).status, 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  EXPECT_THAT(mac().run({"date", "-u", "+%Y-%m-%d"}).output, StartsWith("2026-03-0"));
  // The first process has been there for the hour that was slept, at least.
  EXPECT_THAT(mac().run({"ps", "-o", "etime=", "-p", "1"}).output,
              ::testing::MatchesRegex(" *([0-9]+-)?[0-9]+:[0-9]+:[0-9]+\n"));
  EXPECT_EQ(mac().run({"ps", "-o", "etime=", "-p", "99999"}).output, "");
}

TEST_F(SimulatorTest, SignaturesTravelInArchives) {
  mac().addApplication("Signed", "1.0", "com.example.signed",
                       {"--signed", "Developer ID Application: Ünï Corp (ABCDE12345)"}, "/private/tmp");
  mac().addApplication("Plain", "1.0", "com.example.plain", {"--unsigned"}, "/private/tmp");
  for (const std::string type : {"zip", "tbz"}) {
    SCOPED_TRACE(type);
    const std::string archive = "/private/tmp/both." + type;
    const Outcome made = runOnMachine({sourceFile("simulator/make-installer"), type, mac().path(archive),
                                       mac().path("/private/tmp/Signed.app"), mac().path("/private/tmp/Plain.app")});
    ASSERT_EQ(made.status, 0) << made.output;
    EXPECT_EQ(mac().shell(fmt::format("openssl dgst -sha256 -r {} | cut -c 1-64", archive)).output, made.output);
    const std::string out = "/private/tmp/out-" + type;
    const Outcome unpacked = mac().shell(fmt::format("mkdir {0} && tar -xf {1} -C {0}", out, archive));
    ASSERT_EQ(unpacked.status, 0) << unpacked.output;
    EXPECT_THAT(mac().run({"codesign", "-dv", "--verbose=4", out + "/Signed.app"}).output,
                HasSubstr("\nAuthority=Developer ID Application: Ünï Corp (ABCDE12345)\n"
                          "Authority=Developer ID Certification Authority\n"));
    const Outcome plain = mac().run({"codesign", "-dv", "--verbose=4", out + "/Plain.app"});
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(plain.output, out + "/Plain.app: code object is not signed at all\n");
    EXPECT_EQ(mac().run({"open", out + "/Plain.app"}).status, 0);
    EXPECT_TRUE(isRunning("Plain"));
    mac().run({"killall", "Plain"});
  }
}

TEST_F(SimulatorTest, DialogTakesItsAnswersInOrder) {
  const std::string dialog = "/usr/local/bin/vorlu-ui/prompts/Dialog.app/Contents/MacOS/Dialog";
  const std::string commands = "/private/tmp/commands";
  mac().write(commands, "quit:\n");  // from an earlier prompt: it must not end this one
  const auto prompt = [&](const std::string& flags) {
    return mac().shell(fmt::format("\"{}\" --commandfile {} {} 2>/dev/null;print $?", dialog, commands, flags)).output;
  };
  EXPECT_EQ(prompt("--button1text Ok"), "20\n");
  setClock(100);
  mac().answerDialogs({"2", "0 30", "4"});
  EXPECT_EQ(prompt("--button1text Update --button2text Defer"), "2\n");
  ASSERT_EQ(mac()
                .shell(fmt::format("\"{}\" --commandfile {} --mini --progress 9 < /dev/null &> /dev/null &!", dialog,
                                   commands))
                .status,
            0);
  EXPECT_EQ(prompt("--button1text Update --timer 60"), "0\n");
  EXPECT_EQ(prompt("--button1text Update --timer 20"), "4\n");
  EXPECT_NE(prompt("--button1text Update"), "0\n");
  EXPECT_THAT(mac().toolCalls(), Contains("Dialog: the answers have run out"));
  EXPECT_EQ(mac().run({"pgrep", "-x", "Dialog"}).status, 0) << "a progress window takes no answer";
  ASSERT_EQ(mac().shell(fmt::format("print quit: >> {}", commands)).status, 0);
  EXPECT_EQ(mac().shell("for n in {1..200}; do pgrep -x Dialog || break; sleep 1; done").status, 0);
  EXPECT_EQ(mac().run({"pgrep", "-x", "Dialog"}).status, 1);
}

TEST_F(SimulatorTest, EachCallIsOneLineOfTheLog) {
  mac().run({"pgrep", "-x", "plain-name"});
  mac().run({"pgrep", "-x", "it's two words"});
  mac().run({"pgrep", "-x", "two\nlines\t'"});
  mac().run({"su", "alice", "-c", "id -F"});
  EXPECT_THAT(mac().toolCalls(), ElementsAre("pgrep -x plain-name", R"(pgrep -x 'it'\''s two words')",
                                             R"(pgrep -x $'two\nlines\t\'')", "su alice -c 'id -F'", "id -F"));
}

}  // namespace
}  // namespace vorlu::e2e
