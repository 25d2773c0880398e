#include "vorlu/install/installed_check.h"

#include "tests/unit/install/install_run.h"
#include "vorlu/install/disk_space.h"
#include "vorlu/install/verification.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

class InstalledCheck : public InstallRun {};

TEST_F(InstalledCheck, LooksForAnAppThatMoved) {
  const std::string moved = "The Slides path has changed during the update";
  const std::string updated = "Slides was successfully updated from version 1.0 to 2.0";
  const struct {
    const char* newPath;
    Lines lines;
  } cases[] = {
      {"/Applications/Old.app", {updated}},
      {"/Applications/Slides.app", {moved, updated}},
      {"/Library/Second.app",
       {moved, "Found new path for Slides using alternate path data: /Library/Second.app", updated}},
      {"/Applications/My Slides 2.app",
       {moved, "Found new path for Slides using prefix search: /Applications/My Slides 2.app", updated}},
      {"/Library/Elsewhere.app",
       {moved, "Warning: Could not obtain new App path for Slides. Unable to verify if the update was successful",
        "Error: Unable to verify the Slides version after the update attempt. Version installed: Unknown"}},
  };
  vorlu.currentApp.appName = "Slides";
  vorlu.currentApp.appPath = "/Applications/Slides.app";
  vorlu.currentApp.alternatePaths = {"", "/Library/First.app", "/Library/Second.app"};
  vorlu.currentApp.appPrefixName = "Slides";
  vorlu.currentApp.latestVersionMethod = "CFBundleShortVersionString";
  for (const auto& c : cases) {
    mac.addApplication(c.newPath, "id", "2.0");
    messages();
    EXPECT_EQ(verifyInstalledVersion(vorlu, "/Applications/Old.app", "1.0", "Slides"), c.lines.back() == updated);
    EXPECT_THAT(messages(), ElementsAreArray(c.lines)) << c.newPath;
    mac.files.remove(c.newPath);
  }
}

TEST_F(InstalledCheck, ReadsTheFirstReceiptOnly) {
  vorlu.currentApp.appName = "Slides";
  vorlu.currentApp.latestVersionMethod = "pkgReceipt";
  vorlu.currentApp.installReceipts = {"com.example.first", "com.example.second"};
  for (const auto& [name, version] : {std::pair{"first", "2.0"}, {"second", "3.0"}})
    mac.write(std::string("/private/var/db/receipts/com.example.") + name + ".plist",
              std::string("<plist version=\"1.0\"><dict><key>PackageVersion</key><string>") + version +
                  "</string></dict></plist>");
  EXPECT_TRUE(verifyInstalledVersion(vorlu, "/Applications", "1.0", "Slides"));
  EXPECT_FALSE(verifyInstalledVersion(vorlu, "/Applications", "2.0", "Slides"));
}

class Verification : public InstallRun {};

TEST_F(Verification, ReadsPackageSignatures) {
  const struct {
    const char* output;
    const char* signature;
    Lines logged;
    Lines shown;
  } cases[] = {
      {"Package \"a.pkg\":\n\n   1. Developer ID Installer: Example (AB)  \n   2. Developer ID Installer: Chain\n",
       "Example (AB)",
       {"Found signature: Example (AB)"},
       {"Found signature: Example (AB)"}},
      {"1. 3rd Party Mac Developer Installer: Example (AB)\n", "Example (AB)", {}, {"Found signature: Example (AB)"}},
      {"Status: no signature\n",
       "Error: App is not signed",
       {"Error: App is not signed"},
       {"Error: App is not signed"}},
      {"", "Unknown", {}, {}},
  };
  for (const auto& c : cases)
    mac.processes.onPrefix("/usr/sbin/pkgutil --check-signature /a.pkg", {.output = c.output});
  for (const auto& c : cases) {
    EXPECT_EQ(readPackageSignature(vorlu, "/a.pkg"), c.signature);
    EXPECT_THAT(messages(), ElementsAreArray(c.logged));
    EXPECT_THAT(mac.console.lines(), ElementsAreArray(c.shown));
    mac.console.clear();
  }
}

TEST_F(Verification, TakesTheHashOfTheProcessor) {
  const struct {
    const char* architecture;
    std::optional<int> cpu;
    const char* hash;
  } cases[] = {{"uNIVERSAL", 7, "u"}, {"arch", 7, "i"}, {"arch", 12, "s"}, {"", 12, "s"}, {"arch", {}, "i"}};
  vorlu.currentApp.universalInstallerHash = "u";
  vorlu.currentApp.intelInstallerHash = "i";
  vorlu.currentApp.siliconInstallerHash = "s";
  for (const auto& c : cases) {
    vorlu.currentApp.architecture = c.architecture;
    mac.device.cpu = c.cpu;
    EXPECT_EQ(expectedInstallerHash(vorlu), c.hash);
  }
}

TEST_F(Verification, UnreadableFileMatchesNothing) {
  vorlu.currentApp.architecture = "universal";
  mac.makeFolder(paths::downloads + "/folder.zip");
  const HashCheck check = verifyInstallerHash(vorlu, paths::downloads + "/folder.zip", std::nullopt);
  EXPECT_FALSE(check.matches());
  EXPECT_EQ(check.actual, "Unknown");
}

TEST_F(Verification, DiskSpaceCountsInDecimalKilobytes) {
  const struct {
    std::int64_t installer, installed;
    const char* type;
    std::optional<std::int64_t> bytes;
    std::int64_t required;
    bool sufficient;
  } cases[] = {
      {0, 0, "zip", 1000, 0, true},
      {0, 0, "zip", 499, 0, false},
      {60, 39, "zip", 100'000, 99, true},
      {60, 40, "zip", 100'000, 100, false},
      {20, 19, "", 100'000, 99, true},
      {20, 20, "", 100'400, 100, false},
      {60, 40, "zip", 100'600, 100, true},
      {5, 5, "zip", std::nullopt, 10, true},
      {INT64_MAX, INT64_MAX, "", 100'000, 5'000'000'000'000'000, false},
  };
  for (const auto& c : cases) {
    CurrentApp app;
    app.installerSize = c.installer;
    app.installedSize = c.installed;
    app.downloadFileType = c.type;
    FaultyFileManager& files = mac.files;
    files.freeDisk = c.bytes;
    DiskSpace space = measureDiskSpace(app, files);
    if (!c.bytes) space.available.reset();
    EXPECT_EQ(space.required, c.required);
    EXPECT_EQ(space.isSufficient(), c.sufficient) << c.installer << " " << c.type;
  }
}

}  // namespace
}  // namespace vorlu::test
