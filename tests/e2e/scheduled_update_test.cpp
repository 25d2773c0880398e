#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/run_data.h"

namespace vorlu::e2e {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct ScheduledUpdate : SimulatedMacTest {
  /// An app in version 1.0 of which 2.0 is served.
  AppBlueprints& offer(const std::string& name) {
    mac.addApplication(name, "1.0", "com.example." + name);
    const std::string hash = server.pack("zip", name + ".zip", {server.make(name, "2.0")});
    return catalog.emplace_back(entryOf(name, "2.0", "zip", name + ".zip", hash));
  }
  void start(const std::string& scheduled) {
    server.setCatalog(catalog);
    mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
              R"(<plist version="1.0"><dict><key>GeneralOptions</key><dict><key>excludedAppUpdates</key>
                   <array><string>Excluded-id</string></array></dict><key>ScheduledUpdates</key><dict>)" +
                  scheduled + "</dict></dict></plist>");
    const auto now = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    mac.setHost("clock", fmt::format(R"({{"real": {0}, "mac": {0}, "rate": 20}})", now));
    mac.boot();
    for (const AppBlueprints& app : catalog)
      if (app.appName != "Closed") mac.run({"/usr/bin/open", "-a", *app.appName}, "alice");
  }
  /// The agent's output beside a user who gives these answers.
  std::string run(const std::vector<std::string>& options, const std::string& answers, int status = 0) {
    std::vector<std::string> command = {"/usr/local/bin/vorlu"};
    command.insert(command.end(), options.begin(), options.end());
    mac.write("/private/var/db/dialog-answers", answers);
    const Outcome outcome = mac.run(command);
    EXPECT_EQ(outcome.status, status) << outcome.output;
    EXPECT_EQ(mac.read("/private/var/db/dialog-answers"), "") << "prompts that didn't come\n" << outcome.output;
    EXPECT_EQ(runData().CurrentRunType, "N/A");
    EXPECT_FALSE(std::filesystem::exists(mac.path(paths::watchReceipt)));
    EXPECT_EQ(mac.shell("pgrep -x Dialog").output, "") << "no window is left";
    return outcome.output;
  }
  RunDataFile runData() { return *decodePropertyList<RunDataFile>(mac.read(paths::runData)); }
  std::string version(const std::string& name) {
    return versionOf(mac.path(fmt::format("/Applications/{}.app", name)));
  }
  std::string pid(const std::string& name) { return mac.shell("pgrep -x " + name).output; }
  std::ptrdiff_t calls(const std::string& part) {
    const auto all = mac.toolCalls();
    return std::count_if(all.begin(), all.end(),
                         [&](const auto& call) { return call.find(part) != std::string::npos; });
  }

  SimulatedMac mac;
  AppServer server{{}, mac.path("/private/var/db/vorlu-host.json")};
  std::vector<AppBlueprints> catalog;
};

TEST_F(ScheduledUpdate, DeferredTwiceThenQuitByTheGracePrompt) {
  for (const char* name : {"Slides", "Excluded", "Closed"}) offer(name);
  start(R"(<key>gracePeriodMinutes</key><integer>1</integer><key>runFrequency</key><dict>
             <key>frequencyElapsedMode</key><string>recurring</string>
             <key>deferralWindow</key><integer>0</integer></dict>)");
  const std::string before = pid("Slides");
  EXPECT_THAT(run({"--update", "run"}, "4\n2\n"), HasSubstr("Defer selected\n"));
  EXPECT_EQ(version("Closed"), "2.0") << "without a prompt";
  EXPECT_EQ(runData().DeferCount, "1");
  run({"-u", "prompt"}, "2\n");
  EXPECT_EQ(runData().DeferCount, "0");
  EXPECT_EQ(pid("Slides"), before);

  const std::string output = run({"--update", "run"}, "4\n0\n");
  EXPECT_THAT(output, HasSubstr("The grace period timer ran out\n"));
  EXPECT_THAT(output, HasSubstr("Slides was successfully updated from version 1.0 to 2.0\n"));
  EXPECT_THAT(output, HasSubstr("User acknowledged update complete prompt\n"));
  EXPECT_EQ(version("Slides"), "2.0");
  EXPECT_NE(pid("Slides"), before);
  EXPECT_NE(pid("Slides"), "") << "relaunched";
  EXPECT_THAT(mac.shell("ps -o user= -p $(pgrep -x Slides)").output, HasSubstr("alice"));
  EXPECT_EQ(runData().DeferCount, "2");
  EXPECT_EQ(version("Excluded"), "1.0");
  EXPECT_THAT(mac.read("/private/var/log/Vorlu.log"), Not(HasSubstr("Excluded")));
}

TEST_F(ScheduledUpdate, AStubbornAppIsForcedAndAFailingOneNamed) {
  for (const char* name : {"Stubborn", "Bad", "Good"}) offer(name);
  catalog[1].universalInstallerHash = std::string(64, '0');
  mac.write("/Applications/Stubborn.app/Contents/Resources/ignore-quit", "");
  start("");
  const std::string output = run({"-u", "timerPrompt"}, "0\n0\n", 1);
  EXPECT_THAT(output, HasSubstr("Unable to gracefully quit Stubborn, the process appears to have hung.\n"));
  EXPECT_THAT(output, HasSubstr("Error installing the Bad update."));
  EXPECT_EQ(version("Stubborn") + version("Bad") + version("Good"), "2.01.02.0") << output;
  EXPECT_EQ(calls("open -a /Applications/Stubborn.app"), 5);
  EXPECT_EQ(calls("There was a problem updating **Bad**"), 1);
  for (const char* name : {"Stubborn", "Bad", "Good"}) EXPECT_NE(pid(name), "") << name;
}

TEST_F(ScheduledUpdate, SelfServiceWithNothingToDoAndATestOfTheTestingCatalog) {
  AppBlueprints app = offer("Slides");
  catalog[0].latestVersion = "1.0";
  server.setTestingCatalog({app});
  start("");
  EXPECT_THAT(run({"-u", "selfService"}, "0\n"), HasSubstr("User acknowledged\n"));
  EXPECT_EQ(calls("re all up to date!"), 1);
  const auto prompts = calls("--commandfile");
  EXPECT_THAT(run({"-ut", "testblueprints"}, ""), HasSubstr("All updates installed successfully\n"));
  EXPECT_EQ(version("Slides"), "2.0");
  EXPECT_EQ(calls("--commandfile"), prompts) << "a test shows nothing";
}

}  // namespace
}  // namespace vorlu::e2e
