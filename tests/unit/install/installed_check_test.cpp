#include "vorlu/install/installed_check.h"

#include "tests/unit/install/install_run.h"
#include "vorlu/install/disk_space.h"
#include "vorlu/install/verification.h"

namespace vorlu::test {
namespace {

class InstalledCheck : public InstallRun {};

TEST_F(InstalledCheck, LooksForAnAppThatMoved) {
  const std::string moved = "The Slides path has changed during the update";
  const std::string updated = "Slides was successfully updated from version 1.0 to 2.0";
  const std::pair<const char*, Lines> cases[] = {
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
  for (const auto& [newPath, lines] : cases) {
    mac.addApplication(newPath, "id", "2.0");
    EXPECT_EQ(verifyInstalledVersion(vorlu, "/Applications/Old.app", "1.0", "Slides"), lines.back() == updated);
    EXPECT_EQ(messages(), lines) << newPath;
    mac.files.remove(newPath);
  }
}

class Verification : public InstallRun {};

TEST_F(Verification, ReadsPackageSignatures) {
  const Lines found = {"Found signature: Example (AB)"};
  const Lines unsignedApp = {"Error: App is not signed"};
  const auto expectSignature = [this](const std::string& file, const char* output, const char* signature,
                                      const Lines& logged, const Lines& printed) {
    mac.processes.on("/usr/sbin/pkgutil --check-signature " + file, {.output = output});
    EXPECT_EQ(readPackageSignature(vorlu, file), signature);
    EXPECT_EQ(messages(), logged) << file;
    EXPECT_EQ(shown(), printed) << file;
  };
  expectSignature(
      "/a.pkg", "Package \"a.pkg\":\n\n   1. Developer ID Installer: Example (AB)  \n   2. Developer ID Installer: X\n",
      "Example (AB)", found, found);
  expectSignature("/store.pkg", "1. 3rd Party Mac Developer Installer: Example (AB)\n", "Example (AB)", {}, found);
  expectSignature("/none.pkg", "Status: no signature\n", "Error: App is not signed", unsignedApp, unsignedApp);
  expectSignature("/silent.pkg", "", "Unknown", {}, {});
}

TEST_F(Verification, TakesTheHashOfTheProcessor) {
  vorlu.currentApp.universalInstallerHash = "u";
  vorlu.currentApp.intelInstallerHash = "i";
  vorlu.currentApp.siliconInstallerHash = "s";
  const auto hashFor = [this](const char* architecture, std::optional<int> cpu) {
    vorlu.currentApp.architecture = architecture;
    mac.device.cpu = cpu;
    return expectedInstallerHash(vorlu);
  };
  EXPECT_EQ(hashFor("uNIVERSAL", 7) + hashFor("arch", 7) + hashFor("arch", 12) + hashFor("arch", {}), "uisi");
}

TEST_F(Verification, DiskSpaceCountsInDecimalKilobytes) {
  const auto isSufficient = [this](std::int64_t installer, std::int64_t installed, const char* type,
                                   std::int64_t freeBytes) {
    CurrentApp app;
    app.installerSize = installer;
    app.installedSize = installed;
    app.downloadFileType = type;
    mac.files.freeDisk = freeBytes;
    return measureDiskSpace(app, mac.files).isSufficient();
  };
  EXPECT_TRUE(isSufficient(0, 0, "zip", 1000));
  EXPECT_FALSE(isSufficient(0, 0, "zip", 499));
  EXPECT_TRUE(isSufficient(60, 39, "zip", 100'000));
  EXPECT_FALSE(isSufficient(60, 40, "zip", 100'000));
  EXPECT_TRUE(isSufficient(60, 40, "zip", 100'600));
  EXPECT_TRUE(isSufficient(20, 19, "", 100'000));
  EXPECT_FALSE(isSufficient(20, 20, "", 100'400));
  EXPECT_FALSE(isSufficient(INT64_MAX, INT64_MAX, "", 100'000));
}

}  // namespace
}  // namespace vorlu::test
