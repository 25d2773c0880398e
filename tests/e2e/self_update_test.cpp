#include <fmt/format.h>
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"

namespace vorlu::e2e {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* signer = "Example Corp (EXMPL12345)";
const std::string newAgent = "#!/bin/sh\necho the new agent\n";

struct SelfUpdate : SimulatedMacTest {
  SelfUpdate()
      : server([this](const auto&, refserver::Response& response) {
          const bool isPackage = !response.file.empty();
          if (isPackage && failures-- > 0) response.status = 503;
        }) {
    test::writeFile(shelf / "/vorlu", newAgent);
    std::filesystem::permissions(shelf / "/vorlu", std::filesystem::perms(0755));
    server.pack("pkg", "my agent.pkg",
                {"--id", "com.mosk.vorlu", "--version", "1.5.0", "--location", "/usr/local/bin", shelf / "/vorlu"});
    server.pack("pkg", "dialog.pkg",
                {"--id", "vorluupdateprompts", "--version", "2.0", "--location", "/usr/local/bin/vorlu-ui/prompts",
                 server.make("Dialog", "2.0", {"--program", builtFile("sim-dialog")})});
    server.pack("pkg", "empty.pkg", {"--id", "vorluupdateprompts", "--version", "3.0", shelf / "/vorlu"});
    server.setCatalog({entryOf("Slides", "2.0", "zip", "none.zip", "")});
  }
  /// A record of the manifest.
  static std::string record(const std::string& name, const std::string& file, const std::string& signing,
                            const std::string& version, const std::string& requirement) {
    return fmt::format(R"({{"componentName": "{}", "downloadURL": "{}", "codeSigning": "{}", "latestVersion": "{}",
                           "requirement": "{}"}})",
                       name, "http://127.0.0.1:8642/files/" + file, signing, version, requirement);
  }
  std::string update(const std::string& records) {
    server.setManifest("[" + records + "]");
    const Outcome outcome = mac.shell("vorlu -u self");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(namesIn(mac.path(paths::downloads)), IsEmpty()) << outcome.output;
    return outcome.output;
  }

  int failures = 0;
  test::TemporaryFolder shelf;
  AppServer server;
  SimulatedMac mac;
};

TEST_F(SelfUpdate, TakesOnlyWhatIsNewerProvenAndFits) {
  std::filesystem::create_directories(mac.path(paths::downloads));
  mac.boot();
  const std::string agent = mac.read("/usr/local/bin/vorlu");
  const std::string dialog = record("Dialog", "dialog.pkg", signer, "1.0.0", "");
  const auto expectRefusal = [&](const std::string& records, const std::string& line) {
    EXPECT_THAT(update(records), HasSubstr(line)) << records;
    EXPECT_TRUE(mac.read("/usr/local/bin/vorlu") == agent && versionOf(mac.path(paths::dialogBundle)) == "1.0.0");
  };
  expectRefusal("", "Warning: Could not obtain Vorlu version information.");
  expectRefusal(record("Vorlu", "my agent.pkg", signer, "../1.5.0", ""), "Warning: Could not obtain Vorlu version");
  expectRefusal(record("Vorlu", "my agent.pkg", signer, "1.3.9", "") + "," + dialog,
                "No Vorlu component updates are required");
  expectRefusal(record("Vorlu", "my agent.pkg", signer, "1.5.0", "15.0"), "upgrade to at least macOS 15.0");
  expectRefusal(record("Vorlu", "my agent.pkg", "Somebody Else", "1.5.0", ""), "could not be verified and will be");
  expectRefusal(record("Dialog", "dialog.pkg", signer, "2.0", "1.5.0"),
                "Please update Vorlu to at least version 1.5.0");
  expectRefusal(record("Dialog", "dialog.pkg", "Somebody Else", "2.0", ""), "components could not be verified");
  expectRefusal(record("Dialog", "empty.pkg", signer, "3.0", ""), "Vorlu comonents could not be installed");
  failures = 3;
  expectRefusal(record("Vorlu", "my agent.pkg", signer, "1.5.0", ""),
                "Retrying (attempt 3 of 3)...\nCould not download file from URL "
                "http://127.0.0.1:8642/files/my%20agent.pkg. Status code: 503\n"
                "Error: Could not download the Vorlu v1.5.0 update.");
  failures = 2;
  EXPECT_THAT(update(record("Vorlu", "my agent.pkg", signer, "1.5.0", "14.5.0") + "," +
                     record("Dialog", "dialog.pkg", signer, "2.0", "1.4.0")),
              HasSubstr("Vorlu was updated from version 1.4.0 to version 1.5.0\n"));
  EXPECT_EQ(mac.read("/usr/local/bin/vorlu"), newAgent);
  EXPECT_EQ(versionOf(mac.path(paths::dialogBundle)), "2.0");
  EXPECT_THAT(namesIn(mac.path("/usr/local/bin/vorlu-ui/prompts")), testing::ElementsAre("Dialog.app"));
}

TEST_F(SelfUpdate, AMacWithNothingBecomesWhole) {
  server.setManifest("[" + record("Dialog", "dialog.pkg", signer, "2.0", "") + "]");
  std::filesystem::remove_all(mac.path(paths::components));
  std::filesystem::remove(mac.path(paths::promptComponentReceipt));
  mac.write("/Library/Application Support/MOSK/Logs/JamfPro_EA.log", "old line\n");
  mac.write("/Library/Application Support/MOSK/Run/runData.plist",
            "<plist version=\"1.0\"><dict><key>LastRun</key><integer>77</integer></dict></plist>");
  mac.boot();
  const Outcome init = mac.shell("vorlu --init");
  EXPECT_EQ(init.status, 0);
  EXPECT_THAT(init.output, testing::StartsWith("########### Vorlu 1.4.0 installed ###########\nInitialising Vorlu"));
  EXPECT_EQ(versionOf(mac.path(paths::dialogBundle)), "2.0") << init.output;
  EXPECT_EQ(mac.read(paths::jamfLog), "old line\n");
  EXPECT_THAT(mac.read(paths::runData), HasSubstr("<integer>77</integer>"));
  EXPECT_THAT(namesIn(mac.path("/Library/Application Support/MOSK")), testing::ElementsAre("Vorlu"));
  for (const std::string& path : {paths::networkQuality, std::string("/Library/Apple/usr/share/rosetta/rosetta")})
    EXPECT_TRUE(std::filesystem::exists(mac.path(path))) << path;
  const Outcome check = mac.shell("vorlu -u check");
  EXPECT_EQ(check.status, 0);
  EXPECT_THAT(withoutMissingKey(check.output), testing::Not(HasSubstr("Error")));
}

}  // namespace
}  // namespace vorlu::e2e
