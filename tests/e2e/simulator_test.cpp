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

  // Packs Slides.app, version 2.0, into an installer at a path of the Mac.
  void pack(const std::string& type, const std::string& out, std::vector<std::string> options = {}) {
    const std::string folder = "/private/tmp/shelf";
    if (!fs::exists(mac().path(folder))) mac().addApplication("Slides", "2.0", "com.example.slides", {}, folder);
    options.insert(options.begin(), {sourceFile("simulator/make-installer"), type, mac().path(out)});
    options.push_back(mac().path(folder + "/Slides.app"));
    const Outcome made = runOnMachine(options);
    ASSERT_EQ(made.status, 0) << made.output;
  }

  std::string receiptText(const std::string& receipt, const std::string& key) {
    return mac().run({"/usr/libexec/simulator/sim-tools", "plist-text", "/var/db/receipts/" + receipt, key}).output;
  }

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

TEST_F(SimulatorTest, EveryTypeOfInstallerHoldsTheApplication) {
  const std::string mounted = " >/dev/null && cd /Volumes/Slides";
  const std::string attach = "hdiutil attach -nobrowse in" + mounted;
  const std::string convert = "hdiutil convert -quiet in -format UDTO -o in && hdiutil attach in.cdr" + mounted;
  const std::string install = "installer -pkg Slides.pkg -target / >/dev/null && cd /Applications";
  const std::string unpack = "tar -xf in";
  const std::string then = " && ";
  const std::vector<std::pair<std::string, std::string>> types = {
      {"pkg", "mv in Slides.pkg" + then + install},
      {"dmg", attach},
      {"dmgWithEULA", convert},
      {"pkgInDMG", attach + then + install},
      {"pkgInDMGWithEULA", convert + then + install},
      {"zip", unpack},
      {"tbz", unpack},
      {"zipInTBZ", unpack + then + "tar -xf Slides.zip"},
      {"pkgInZIP", unpack + then + install},
      {"dmgInZIP", unpack + then + "mv Slides.dmg in" + then + attach},
      {"dmgWithEULAInZIP", unpack + then + "mv Slides.dmg in" + then + convert},
  };
  for (const auto& [type, open] : types) {
    SCOPED_TRACE(type);
    fs::create_directory(mac().path("/private/tmp/work"));
    pack(type, "/private/tmp/work/in");
    const Outcome opened = mac().shell("cd /private/tmp/work && " + open + " && codesign -dv --verbose=4 Slides.app");
    EXPECT_THAT(opened.output, HasSubstr("Authority=Developer ID Application: Example Corp (EXMPL12345)\n"));
    EXPECT_EQ(
        mac().shell("rm -rf /Applications/*(N) /tmp/work; [[ ! -e /Volumes/Slides ]] || hdiutil detach disk4").status,
        0);
  }
}

TEST_F(SimulatorTest, ImagesAttachUnderTheirOwnNames) {
  const std::string disk =
      "/dev/disk{0}             \tApple_partition_scheme        \t\n"
      "/dev/disk{0}s1           \tApple_HFS                     \t/Volumes/{1}\n";
  pack("dmg", "/private/tmp/a.dmg", {"--name", "My Ünï Slides"});
  pack("pkgInDMG", "/private/tmp/b.dmg", {"--name", "My Ünï Slides"});
  pack("dmgWithEULA", "/private/tmp/c.dmg");
  mac().shell(
      "head -c 900000 /tmp/a.dmg > /tmp/cut.dmg; print '<html>' > /tmp/page.dmg; "
      "cp /tmp/a.dmg /tmp/bad.dmg; print -n XXXX | dd of=/tmp/bad.dmg bs=1 seek=400000 conv=notrunc");
  const std::string unknown = "hdiutil: attach failed - image not recognized\n";
  const std::vector<std::pair<std::string, std::string>> steps = {
      {"attach -nobrowse /tmp/a.dmg", fmt::format(fmt::runtime(disk), 4, "My Ünï Slides")},
      {"attach -nobrowse /tmp/b.dmg", fmt::format(fmt::runtime(disk), 5, "My Ünï Slides 1")},
      {"attach -nobrowse /tmp/a.dmg", fmt::format(fmt::runtime(disk), 4, "My Ünï Slides")},
      {"attach -nobrowse /tmp/c.dmg",
       "Licence of Slides: you may use it.\nAgree Y/N? hdiutil: attach failed - Operation canceled\n"},
      {"convert /tmp/c.dmg -format UDTO -o /tmp/c", "created: /tmp/c.cdr\n"},
      {"convert /tmp/c.dmg -format UDTO -o /tmp/c", "hdiutil: convert failed - File exists\n"},
      {"convert -quiet /tmp/page.dmg -format UDTO -o /tmp/page", ""},
      {"attach /tmp/c.cdr", fmt::format(fmt::runtime(disk), 6, "Slides")},
      {"attach /tmp/cut.dmg", unknown},
      {"attach /tmp/page.dmg", unknown},
      {"attach /tmp/bad.dmg", unknown},
      {"attach /tmp/none.dmg", "hdiutil: attach failed - No such file or directory\n"},
      {"detach '/Volumes/My Ünï Slides'", "\"disk4\" ejected.\n"},
      {"detach '/Volumes/My Ünï Slides'", "hdiutil: detach failed - No such file or directory\n"},
  };
  for (const auto& [arguments, output] : steps) EXPECT_EQ(mac().shell("hdiutil " + arguments).output, output);
  EXPECT_EQ(mac().run({"ls", "/Volumes"}).output, "My Ünï Slides 1\nSlides\n");
  mac().shell("cd /Volumes/Slides; touch new; hdiutil detach /Volumes/Slides || hdiutil detach -force /Volumes/Slides");
  EXPECT_EQ(mac().toolCalls().back(), "hdiutil: /Volumes/Slides is read-only, but was changed");
  mac().shutdown();
  EXPECT_TRUE(fs::is_empty(mac().path("/Volumes")));
}

TEST_F(SimulatorTest, PackagesRunTheirScriptsAndLeaveReceipts) {
  const auto script = [&](const std::string& name, const std::string& text) {
    mac().write("/private/tmp/" + name, "#!/bin/zsh\n" + text);
    return mac().path("/private/tmp/" + name);
  };
  const std::string failing = script("failing", "exit 3\n");
  pack("pkg", "/private/tmp/good.pkg",
       {"--preinstall", script("before", "print before $*; ls /Applications\n"), "--postinstall",
        script("after", "print after $*; ls /Applications; sleep 300 &!\n"), "--id", "com.example.good"});
  pack("pkg", "/private/tmp/early.pkg", {"--preinstall", failing, "--id", "com.example.early", "--unsigned"});
  pack("pkg", "/private/tmp/late.pkg", {"--postinstall", failing, "--id", "com.example.late"});
  mac().shell("head -c 100000 /tmp/good.pkg > /tmp/cut.pkg");
  struct Case {
    std::string package, end;
    int status;
    bool installed, receipt;
  };
  const std::vector<Case> cases = {
      {"cut", "The install failed. (The package “cut.pkg” is damaged and can’t be opened.)", 1, false, false},
      {"early", "An error occurred while running scripts from the package “early.pkg”.)", 1, false, false},
      {"late", "An error occurred while running scripts from the package “late.pkg”.)", 1, true, false},
      {"good", "installer:%100.000000\ninstaller:PHASE:The software was successfully installed.\n", 0, true, true},
  };
  for (const auto& [package, end, status, installed, receipt] : cases) {
    SCOPED_TRACE(package);
    const Outcome outcome = mac().run({"installer", "-verboseR", "-pkg", "/tmp/" + package + ".pkg", "-target", "/"});
    EXPECT_EQ(outcome.status, status);
    EXPECT_THAT(outcome.output, HasSubstr(end));
    EXPECT_EQ(fs::exists(mac().path("/Applications/Slides.app/Contents/Info.plist")), installed);
    EXPECT_EQ(fs::exists(mac().path("/private/var/db/receipts/com.example." + package + ".plist")), receipt);
    fs::remove_all(mac().path("/Applications/Slides.app"));
  }
  EXPECT_EQ(mac().read("/private/var/log/install.log"),
            "before /tmp/good.pkg /Applications / /\nafter /tmp/good.pkg /Applications / /\nSlides.app\n");
  EXPECT_EQ(receiptText("com.example.good.plist", "PackageVersion"), "2.0\n");
  EXPECT_EQ(receiptText("com.example.good.plist", "InstallPrefixPath"), "Applications\n");
  EXPECT_EQ(mac().shell("ls -d /tmp/PKInstallSandbox*").status, 1);
  EXPECT_THAT(mac().run({"pkgutil", "--check-signature", "/tmp/good.pkg"}).output,
              HasSubstr("1. Developer ID Installer: Example Corp (EXMPL12345)\n"));
  EXPECT_EQ(mac().run({"pkgutil", "--check-signature", "/tmp/early.pkg"}).output,
            "Package \"early.pkg\":\n   Status: no signature\n");
}

TEST_F(SimulatorTest, ChoicesDecideWhatAPackageInstalls) {
  mac().addApplication("Mike's \"Draw\" & Co", "1.0", "com.example.draw", {}, "/private/tmp/shelf2");
  pack("pkg", "/private/tmp/suite.pkg",
       {"--separate", "--unselected", "Slides", mac().path("/private/tmp/shelf2/Mike's \"Draw\" & Co.app")});
  const auto choice = [](const std::string& name, const std::string& setting) {
    return fmt::format(
        "<dict><key>attributeSetting</key>{}<key>choiceAttribute</key><string>selected</string>"
        "<key>choiceIdentifier</key><string>{}</string></dict>",
        setting, name);
  };
  const std::string draw = "Mike's \"Draw\" &amp; Co", drawApp = "Mike's \"Draw\" & Co.app\n";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", drawApp},
      {choice("Slides", "<integer>1</integer>"), drawApp + "Slides.app\n"},
      {choice("Slides", "<true/>") + choice(draw, "<integer>0</integer>"), "Slides.app\n"},
      {choice(draw, "<false/>"), ""},
  };
  for (const auto& [changes, installed] : cases) {
    SCOPED_TRACE(changes);
    mac().write("/private/tmp/choices.xml", "<plist version=\"1.0\"><array>" + changes + "</array></plist>");
    EXPECT_EQ(mac().shell("installer -applyChoiceChangesXML /tmp/choices.xml -pkg /tmp/suite.pkg -target /").status, 0);
    EXPECT_EQ(mac().shell("ls /Applications; rm -rf /Applications/*(N)").output, installed);
  }
}

TEST_F(SimulatorTest, NetworkQualityComesFromTheHostFile) {
  mac().setHost("downlinkMbps", "87.5");
  EXPECT_THAT(mac().shell("networkQuality -s -v -c").output, HasSubstr("\"dl_throughput\": 87500000,"));
  EXPECT_THAT(mac().shell("networkQuality").output, HasSubstr("\nDownlink capacity: 87.500 Mbps - "));
  mac().setHost("downlinkMbps", "null");
  EXPECT_EQ(mac().shell("networkQuality -s -v -c 2>/dev/null; print $?").output, "1\n");
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
