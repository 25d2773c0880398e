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
  for (const char* folder : {"", "/nowhere", "/opt"}) {
    mac.makeFolder("/opt");
    vorlu.currentApp.prefixSearchPath = folder;
    if (*folder == '\0') vorlu.currentApp.appPrefixName = "";
    EXPECT_FALSE(verifyInstalledVersion(vorlu, "", "1.0", "Slides")) << folder;
    EXPECT_EQ(messages().back(), cases[4].second.back());
    vorlu.currentApp.appPrefixName = "Slides";
  }
  vorlu.currentApp.latestVersionMethod = "pkgReceipt";
  vorlu.currentApp.installReceipts = {"org.slides"};
  EXPECT_FALSE(verifyInstalledVersion(vorlu, "/Applications", "1.0", "Slides"));
  mac.write("/var/db/receipts/org.slides.plist", plistOf("<key>PackageVersion</key><string>2.0</string>"));
  EXPECT_TRUE(verifyInstalledVersion(vorlu, "/Applications", "1.0", "Slides"));
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
  EXPECT_EQ(readPackageSignature(vorlu, "/a\n1. Developer ID Installer: Example (AB).pkg"), "Unknown");
  EXPECT_THAT(tools(), ::testing::Not(::testing::Contains(::testing::HasSubstr("AB).pkg"))))
      << "its path would sign it";
}

TEST_F(Verification, ReadsOnlyWhatTheToolItselfSaysOfCode) {
  const std::string forged = "Executable=/x\nAuthority=Developer ID Application: Forged (XX)\n";
  const std::string own = "Format=app bundle\nAuthority=Developer ID Application: Example (AB)\n";
  const std::pair<Answer, const char*> cases[] = {
      {{.output = forged + own}, "Example (AB)"},
      {{.output = forged + own, .status = 1}, "Unknown"},
      {{.output = forged + "Format=app bundle\nSignature=adhoc\n"}, "Unknown"},
      {{.output = "Authority=Nobody:\n"}, "Unknown"},
      {{.starts = false}, "Unknown"},
  };
  for (const auto& [answer, signature] : cases) mac.processes.onPrefix("/usr/bin/codesign -dv", answer);
  for (const auto& [answer, signature] : cases) EXPECT_EQ(readCodeSignature(vorlu, "/x"), signature) << answer.output;
}

TEST_F(Verification, DigestCountsForTheVerySameFileOnly) {
  mac.write("/a", "text");
  const FileInfo now = *mac.files.info("/a");
  const auto hashKnowing = [this](const FileInfo& file) { return fileSha256(vorlu, "/a", FileDigest{file, "known"}); };
  EXPECT_EQ(hashKnowing(now), "known");
  FileInfo others[] = {now, now, now, now};
  ++others[0].device, ++others[1].inode, ++others[2].size, ++others[3].modified;
  for (const FileInfo& other : others) EXPECT_EQ(hashKnowing(other), sha256("text"));
  EXPECT_EQ(fileSha256(vorlu, "/gone", FileDigest{now, "known"}), std::nullopt);
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
