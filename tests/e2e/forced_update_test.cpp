#include <fmt/format.h>
#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/paths.h"

namespace vorlu::e2e {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct ForcedUpdate : SimulatedMacTest {
  /// A marked app in version 1.0 of which 2.0 is served.
  AppBlueprints& mark(const std::string& name, const std::vector<std::string>& options) {
    mac.addApplication(name, "1.0", "com.example." + name);
    const std::string hash = server.pack("zip", name + ".zip", {server.make(name, "2.0")});
    std::vector<std::string> command = {sourceFile("simulator/mark-forced"), name + "-id", "--mac", mac.path("")};
    command.insert(command.end(), options.begin(), options.end());
    EXPECT_EQ(runOnMachine(command).status, 0) << name;
    return catalog.emplace_back(entryOf(name, "2.0", "zip", name + ".zip", hash));
  }
  bool marked(const std::string& name) { return std::filesystem::exists(mac.path(forcedReceiptPath(name + "-id"))); }
  std::string version(const std::string& name) { return versionOf(mac.path("/Applications/" + name + ".app")); }
  std::string pid(const std::string& name) { return mac.shell("pgrep -x " + name).output; }
  void startWith(const std::string& openApp) {
    server.setCatalog(catalog);
    const auto now = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    mac.setHost("clock", fmt::format(R"({{"real": {0}, "mac": {0}, "rate": 10}})", now));
    mac.boot();
    EXPECT_EQ(mac.run({"/usr/bin/open", "-a", openApp}, "alice").status, 0);
  }
  /// `vorlu -u force` beside a user who gives exactly these answers.
  std::string force(const std::string& answers) {
    mac.write("/private/var/db/dialog-answers", answers);
    const Outcome outcome = mac.run({"/usr/local/bin/vorlu", "-u", "force"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(mac.read("/private/var/db/dialog-answers"), "") << "prompts that didn't come\n" << outcome.output;
    EXPECT_THAT(mac.read("/private/var/log/tools.log"), Not(HasSubstr("run out")));
    return outcome.output;
  }

  SimulatedMac mac;
  AppServer server{{}, mac.path("/private/var/db/vorlu-host.json")};
  std::vector<AppBlueprints> catalog;
};

TEST_F(ForcedUpdate, AppsInUseArePromptedForTheOthersUpdatedSilently) {
  mark("Asked", {"--deferrals", "1", "--grace", "1", "--period", "0"});
  mark("Closed", {"--deferrals", "3"});
  mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
            R"(<plist version="1.0"><dict><key>GeneralOptions</key><dict>
                 <key>allowedAppUpdates</key><array><string>Another-id</string></array></dict></dict></plist>)");
  startWith("Asked");
  const std::string before = pid("Asked");
  EXPECT_THAT(force("2\n"), HasSubstr("The user deferred. The new defer count is 0\n"));
  EXPECT_TRUE(marked("Asked") && version("Asked") == "1.0" && pid("Asked") == before);
  EXPECT_TRUE(!marked("Closed") && version("Closed") == "2.0") << "silently, behind the deferred one";

  EXPECT_THAT(force("4\n0\n"), HasSubstr("The grace period timer ran out\n"));
  EXPECT_TRUE(!marked("Asked") && version("Asked") == "2.0");
  EXPECT_NE(pid("Asked"), before);
  EXPECT_EQ(pid("Asked").find('\n'), pid("Asked").size() - 1) << "relaunched once: " << pid("Asked");
}

TEST_F(ForcedUpdate, WhatCannotBeUpdatedKeepsItsReceiptForLater) {
  mark("Bad", {}).universalInstallerHash = std::string(64, '0');
  startWith("Bad");
  EXPECT_THAT(force("0\n0\n"), HasSubstr("Error: Could not install the Bad forced update."));
  EXPECT_NE(pid("Bad"), "") << "the user has it back";
  EXPECT_THAT(force(""), HasSubstr("The deferral period has not elapsed.\n"));
  server.setCatalog({});
  std::filesystem::remove(mac.path(paths::offlineData));
  EXPECT_THAT(force(""), Not(HasSubstr("Removing"))) << "an empty catalog knows nothing";
  EXPECT_TRUE(marked("Bad"));
}

}  // namespace
}  // namespace vorlu::e2e
