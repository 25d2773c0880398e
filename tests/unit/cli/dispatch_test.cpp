#include "vorlu/cli/entry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_platform.h"
#include "vorlu/cli/command_option.h"
#include "vorlu/vorlu.h"

namespace vorlu::test {
namespace {

using Lines = std::vector<std::string>;

const std::string denied = "Error: Permission denied.";
const std::string forInstalls = "Vorlu must be run as root to perform App installations.";
const std::string forUpdates = "Vorlu must be run as root to perform App updates.";
const std::string forReports = "Vorlu must be run as root for reporting functions";
const std::string forRoot = "Vorlu must be run as root";
const std::string noData =
    "Error: No Application data was found. Unable to continue. For support please contact support@example.com";

/// Lines of the usage text are told as one word.
Lines withoutUsage(Lines lines) {
  const auto start = std::find(lines.begin(), lines.end(), "USAGE");
  if (start != lines.end()) return lines;
  for (auto& line : lines) {
    if (line.find("Vorlu CLI Usage:") != std::string::npos) line = "USAGE";
  }
  return lines;
}

struct DispatchTest : testing::Test {
  TestPlatform mac;

  int run(const Lines& arguments) {
    mac.console.clear();
    const Site site(sealedSite, mac.security);
    Vorlu vorlu(mac.platform(), site);
    return runVorlu(vorlu, arguments);
  }
  Lines shown() { return withoutUsage(mac.console.lines()); }
};

TEST_F(DispatchTest, RefusesBeforeAnythingIsTouched) {
  mac.processes.setUserName("alice");
  const struct {
    Lines arguments;
    int status;
    Lines shown;
  } cases[] = {
      {{"--help"}, 0, {"USAGE"}},
      {{"-h"}, 0, {"USAGE"}},
      {{"-q"}, 0, {"USAGE"}},
      {{"-U", "run"}, 0, {"USAGE"}},
      {{""}, 0, {"USAGE"}},
      {{"u"}, 0, {"USAGE"}},
      {{"--VERSION"}, 0, {"USAGE"}},
      {{"-v"}, 0, {"Vorlu Version: 1.4.0"}},
      {{"--version", "x"}, 0, {"Vorlu Version: 1.4.0"}},
      {{"éu", "bogus"}, 0, {"Invalid update argument: bogus", "USAGE"}},
      {{"xu", "bogus"}, 0, {"Invalid update argument: bogus", "USAGE"}},
      {{"-u", "bogus"}, 0, {"Invalid update argument: bogus", "USAGE"}},
      {{"-u", "RUN"}, 0, {denied, forUpdates}},
      {{"-u", "check"}, 0, {denied, forUpdates}},
      {{"-u", "-FORCE"}, 0, {denied, forUpdates}},
      {{"-u"}, 1, {"USAGE"}},
      {{"xu"}, 1, {"USAGE"}},
      {{"-u", "check", "--update"}, 1, {"USAGE"}},
      {{"-i"}, 1, {"USAGE"}},
      {{"--install", "firefox", "-i"}, 1, {"USAGE"}},
      {{"-i", "firefox"}, 0, {denied, forInstalls}},
      {{"-ip", "firefox"}, 0, {denied, forInstalls}},
      {{"--installProgress", "--installprogress"}, 1, {"USAGE"}},
      {{"-it", "firefox"}, 0, {denied, forInstalls}},
      {{"-ut", "bogus"}, 0, {denied, forUpdates}},
      {{"-ut"}, 1, {"USAGE"}},
      {{"-r"}, 1, {"USAGE"}},
      {{"-r", "anything"}, 0, {denied, forReports}},
      {{"--init"}, 0, {denied, forRoot}},
      {{"-dk"}, 0, {denied, forRoot}},
      {{"-c"}, 1, {"USAGE"}},
      {{"-c", "firefox", "--check"}, 1, {"USAGE"}},
      {{"-c", "firefox"}, 1, {noData}},
  };
  for (const auto& [arguments, status, lines] : cases) {
    const std::string line = testing::PrintToString(arguments);
    EXPECT_EQ(run(arguments), status) << line;
    EXPECT_EQ(shown(), lines) << line;
  }
  EXPECT_TRUE(mac.processes.commands().empty());
  EXPECT_FALSE(mac.exists("/private/var/log/Vorlu.log"));
  EXPECT_FALSE(mac.exists("/Library/Application Support/MOSK"));
}

TEST_F(DispatchTest, RootGetsUsageForAnUnknownTestUpdate) {
  EXPECT_EQ(run({"-ut", "bogus"}), 0);
  EXPECT_EQ(shown(), Lines{"USAGE"});
}

TEST_F(DispatchTest, WithoutArgumentsItIntroducesItself) {
  mac.processes.setUserName("alice");
  EXPECT_EQ(run({}), 0);
  const Lines lines = shown();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "Vorlu CLI agent");
  EXPECT_EQ(lines[2], "Support: support@example.com");
  EXPECT_EQ(lines[3], "USAGE");
}

TEST_F(DispatchTest, UsageBeginsAndEndsWithAnEmptyLine) {
  run({"-h"});
  const std::string usage = mac.console.lines().front() + "\n";
  EXPECT_TRUE(usage.starts_with("\nVorlu CLI Usage:\n\n  --update check, -u check\n          Checks for any new"));
  EXPECT_TRUE(usage.ends_with("\nFor support contact support@example.com\n\n")) << usage;
  EXPECT_EQ(std::count(usage.begin(), usage.end(), '\n'), 48) << usage;
}

TEST(CommandOption, TokensAreExact) {
  const struct {
    const char* token;
    CommandOption option;
  } cases[] = {
      {"h", CommandOption::help},
      {"-help", CommandOption::unknown},
      {"i", CommandOption::install},
      {"-install", CommandOption::install},
      {"ip", CommandOption::installProgress},
      {"-installprogress", CommandOption::unknown},
      {"it", CommandOption::installTest},
      {"-update", CommandOption::update},
      {"ut", CommandOption::updateTest},
      {"-check", CommandOption::check},
      {"-report", CommandOption::report},
      {"-init", CommandOption::initialise},
      {"init", CommandOption::unknown},
      {"dk", CommandOption::deleteKeys},
      {"-version", CommandOption::version},
      {"", CommandOption::unknown},
      {"U", CommandOption::unknown},
  };
  for (const auto& [token, option] : cases) EXPECT_EQ(optionForToken(token), option) << token;
}

}  // namespace
}  // namespace vorlu::test
