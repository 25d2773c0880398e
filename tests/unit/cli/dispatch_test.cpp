#include "vorlu/cli/entry.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

const std::string denied = "Error: Permission denied.";

/// Lines of the usage text are told as one word.
Lines withoutUsage(Lines lines) {
  for (auto& line : lines)
    if (line.find("Vorlu CLI Usage:") != std::string::npos) line = "USAGE";
  return lines;
}

struct DispatchTest : testing::Test {
  TestPlatform mac;

  int run(const Lines& arguments) {
    mac.console.take();
    const Site site(sealedSite, mac.security);
    Vorlu vorlu(mac.platform(), site);
    return runVorlu(vorlu, arguments);
  }
  Lines shown() { return withoutUsage(mac.console.lines()); }
};

TEST_F(DispatchTest, RefusesBeforeAnythingIsTouched) {
  mac.processes.setUserName("alice");
  const auto expectShown = [this](int status, const Lines& lines, const std::vector<Lines>& commandLines) {
    for (const Lines& arguments : commandLines) {
      EXPECT_EQ(run(arguments), status) << testing::PrintToString(arguments);
      EXPECT_EQ(shown(), lines) << testing::PrintToString(arguments);
    }
  };
  expectShown(0, {"USAGE"}, {{"--help"}, {"-q"}, {"-U", "run"}, {""}, {"--VERSION"}, {"-help"}, {"--it"}});
  expectShown(1, {"USAGE"}, {{"-u"}, {"-i"}, {"-r"}, {"-c"}, {"-ut"}, {"-u", "check", "--update"}});
  expectShown(
      1, {"USAGE"},
      {{"--install", "firefox", "-i"}, {"--installProgress", "--installprogress"}, {"-c", "firefox", "--check"}});
  expectShown(0, {"Vorlu Version: 1.4.0"}, {{"-v"}, {"--version", "x"}});
  expectShown(0, {"Invalid update argument: bogus", "USAGE"}, {{"éu", "bogus"}, {"xu", "bogus"}, {"-u", "bogus"}});
  expectShown(0, {denied, "Vorlu must be run as root to perform App updates."},
              {{"-u", "RUN"}, {"-u", "check"}, {"-u", "-FORCE"}, {"-ut", "bogus"}});
  expectShown(0, {denied, "Vorlu must be run as root to perform App installations."},
              {{"-i", "firefox"}, {"-ip", "firefox"}, {"-it", "firefox"}});
  expectShown(0, {denied, "Vorlu must be run as root for reporting functions"}, {{"-r", "anything"}});
  expectShown(0, {denied, "Vorlu must be run as root"}, {{"--init"}, {"-dk"}});
  expectShown(1,
              {"Error: No Application data was found. Unable to continue. For support please contact "
               "support@example.com"},
              {{"-c", "firefox"}});
  EXPECT_TRUE(mac.processes.takeCommands().empty());
  EXPECT_FALSE(mac.exists("/private/var/log/Vorlu.log"));
  EXPECT_FALSE(mac.exists("/Library/Application Support/MOSK"));
}

TEST_F(DispatchTest, WithoutArgumentsItIntroducesItself) {
  EXPECT_EQ(run({"-ut", "bogus"}), 0);
  EXPECT_EQ(shown(), Lines{"USAGE"}) << "to root, too";
  mac.processes.setUserName("alice");
  EXPECT_EQ(run({}), 0);
  const Lines lines = shown();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "Vorlu CLI agent");
  EXPECT_EQ(lines[2], "Support: support@example.com");
  EXPECT_EQ(lines[3], "USAGE");
}

}  // namespace
}  // namespace vorlu::test
