#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/paths.h"

namespace vorlu::e2e {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

struct ForcedUpdate : SimulatedMacTest {
  /// An app in version 1.0 of which 2.0 is served.
  AppBlueprints& offer(const std::string& name) {
    mac.addApplication(name, "1.0", "com.example." + name);
    const std::string hash = server.pack("zip", name + ".zip", {server.make(name, "2.0")});
    return catalog.emplace_back(entryOf(name, "2.0", "zip", name + ".zip", hash));
  }
  void mark(const std::string& name, const std::vector<std::string>& options) {
    std::vector<std::string> command = {sourceFile("simulator/mark-forced"), name + "-id", "--mac", mac.path("")};
    command.insert(command.end(), options.begin(), options.end());
    EXPECT_EQ(runOnMachine(command).status, 0) << name;
  }
  bool marked(const std::string& name) { return std::filesystem::exists(mac.path(forcedReceiptPath(name + "-id"))); }
  std::string version(const std::string& name) { return versionOf(mac.path(fmt::format("/Applications/{}.app", name))); }
  std::string pid(const std::string& name) { return mac.shell("pgrep -x " + name).output; }
  void open(const std::string& name) { ASSERT_EQ(mac.run({"/usr/bin/open", "-a", name}, "alice").status, 0); }
  /// `vorlu -u force` beside a user who gives these answers.
  std::string force(const std::string& answers) {
    mac.write("/private/var/db/dialog-answers", answers);
    const Outcome outcome = mac.run({"/usr/local/bin/vorlu", "-u", "force"});
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_EQ(mac.read("/private/var/db/dialog-answers"), "") << "prompts that didn't come\n" << outcome.output;
    EXPECT_FALSE(std::filesystem::exists(mac.path(paths::currentTask)));
    return outcome.output;
  }
  void start() {
    server.setCatalog(catalog);
    const auto now = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    mac.setHost("clock", fmt::format(R"({{"real": {0}, "mac": {0}, "rate": 20}})", now));
    mac.boot();
  }

  SimulatedMac mac;
  AppServer server{{}, mac.path("/private/var/db/vorlu-host.json")};
  std::vector<AppBlueprints> catalog;
};

TEST_F(ForcedUpdate, AppsInUseArePromptedForTheOthersUpdatedSilently) {
  for (const char* name : {"Asked", "Closed", "Late"}) offer(name);
  mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
            R"(<plist version="1.0"><dict><key>GeneralOptions</key><dict>
                 <key>allowedAppUpdates</key><array><string>Late-id</string></array></dict></dict></plist>)");
  start();
  open("Asked");
  mark("Asked", {"--deferrals", "1", "--grace", "1", "--period", "0"});
  mark("Closed", {"--deferrals", "3"});
  const std::string before = pid("Asked");
  EXPECT_THAT(force("2\n"), HasSubstr("The user deferred. The new defer count is 0\n"));
  EXPECT_EQ(version("Asked"), "1.0");
  EXPECT_EQ(pid("Asked"), before);
  EXPECT_TRUE(marked("Asked"));
  EXPECT_EQ(version("Closed"), "2.0") << "silently, behind the deferred one, and not on the allowed list";
  EXPECT_FALSE(marked("Closed"));

  // the grace period runs out, and the update is acknowledged
  const std::string output = force("4\n0\n");
  EXPECT_THAT(output, HasSubstr("The grace period timer ran out\n"));
  EXPECT_EQ(version("Asked"), "2.0") << output;
  EXPECT_FALSE(marked("Asked"));
  EXPECT_NE(pid("Asked"), before);
  EXPECT_EQ(std::count(output.begin(), output.end(), '\n') > 0 && pid("Asked").find('\n') == pid("Asked").size() - 1, true)
      << "relaunched once: " << pid("Asked");
  EXPECT_EQ(version("Late"), "1.0") << "nobody marked it";
}

TEST_F(ForcedUpdate, WhatCannotBeUpdatedKeepsItsReceiptForLater) {
  offer("Bad").universalInstallerHash = std::string(64, '0');
  offer("Limited");
  start();
  open("Bad");
  mark("Bad", {});
  EXPECT_THAT(force("0\n0\n"), HasSubstr("Error: Could not install the Bad forced update."));
  EXPECT_TRUE(marked("Bad"));
  EXPECT_NE(pid("Bad"), "") << "the user has it back";
  const std::string held = force("");
  EXPECT_THAT(held, HasSubstr("The deferral period has not elapsed.\n"));

  server.setCatalog({});
  mac.write(mac.path("") == "" ? "" : paths::offlineData, "[]");
  EXPECT_THAT(force(""), Not(HasSubstr("Removing")));
  EXPECT_TRUE(marked("Bad")) << "an empty catalog knows nothing";
}

}  // namespace
}  // namespace vorlu::e2e
