#include <fmt/format.h>

#include <functional>

#include "tests/unit/install/install_run.h"
#include "vorlu/install/attached_images.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

class PipelineFlow : public InstallRun {
 protected:
  InstallOutcome update(const std::string& appName = "Slides") { return runInstallPipeline(vorlu, updateOf(appName)); }

  /// A failed update of Slides that leaves nothing behind and the installed app as it was.
  void expectCleanFailure(const std::string& what) {
    SCOPED_TRACE(what);
    EXPECT_EQ(update(), InstallOutcome::failed);
    EXPECT_TRUE(vorlu.progress.installFailed);
    EXPECT_THAT(vorlu.updates.failedUpdates, ElementsAre("server.Slides"));
    EXPECT_EQ(installedVersion("Slides"), "1.0");
    EXPECT_THAT(leftovers(), IsEmpty());
    EXPECT_THAT(mac.power.held, IsEmpty());
    EXPECT_THAT(*mac.files.list("/Applications"), ElementsAre("Slides.app"));
    for (const char* note : {"/placement-4000", "/images-4000"}) EXPECT_FALSE(mac.exists(paths::run + note));
    vorlu.updates.failedUpdates.clear();
  }
};

TEST_F(PipelineFlow, NameOfAnImageAddsNoLineToTheNote) {
  AttachedImages images(vorlu);
  images.announce(paths::output + "/a\n/Users/alice/b.dmg");
  EXPECT_FALSE(mac.exists(paths::run + "/images-4000"));
}

TEST_F(PipelineFlow, UpdatesByHash) {
  const AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  EXPECT_EQ(update(), InstallOutcome::installed);
  EXPECT_EQ(messages(), linesOfUpdate("Slides", *app.universalInstallerHash));
  const std::string file = paths::downloads + "/Slides-v2.0.zip";
  EXPECT_THAT(tools(), ElementsAre("/usr/bin/tar -xf '" + file + "' -C '" + paths::output + "'"));
  EXPECT_EQ(installedVersion("Slides"), "2.0");
  EXPECT_THAT(leftovers(), IsEmpty());
  EXPECT_THAT(*mac.files.list("/Applications"), ElementsAre("Slides.app"));
  EXPECT_THAT(mac.power.calls, ElementsAre("create Initialising Slides update", "release 1"));
}

TEST_F(PipelineFlow, SignatureAloneDecidesWhenItIsAskedFor) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  app.verifySignature = std::nullopt;  // absent asks for it
  app.universalInstallerHash = "wrong";
  app.expectedCodeSignature = "Example Inc (ABCDE12345)";
  mac.processes.on("/usr/bin/codesign -dv --verbose=4 '" + paths::output + "/Slides.app'",
                   {.output = "  Authority=Developer ID Application: Example Inc (ABCDE12345)\n"
                              "Authority=Developer ID Certification Authority: Other\n"});
  EXPECT_EQ(update(), InstallOutcome::installed);
  Lines expected = linesOfUpdate("Slides", "wrong");
  const Lines proof = {"Verifying signing information...", "Found signature: Example Inc (ABCDE12345)",
                       "Signing verification complete. The App matches the expected code signing. Continuing..."};
  expected.insert(expected.begin() + 12, proof.begin(), proof.end());
  EXPECT_EQ(messages(), expected);
}

TEST_F(PipelineFlow, RefusesWhatIsNotSignedAsExpected) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  app.verifySignature = true;
  const struct {
    const char* expectedSignature;
    const char* output;
    const char* found;  ///< the line before the refusal
  } cases[] = {
      {"Example (A)", "Authority=Developer ID Application: Other (B)\n", "Found signature: Other (B)"},
      {"Example (A)", "x: code object is not signed at all\n", "Error: App is not signed"},
      {"Example (A)", "Authority=Software Signing\n", "Verifying signing information..."},
      {"Example (A)", "Executable=/x/Authority=Any: Example (A)\n", "Verifying signing information..."},
      {"", "Authority=Developer ID Application: \n", "Verifying signing information..."},
      {"", "Authority=Developer ID Application: Example (A)\n", "Found signature: Example (A)"},
  };
  for (const auto& c : cases) mac.processes.onPrefix("/usr/bin/codesign -dv", {.output = c.output});
  for (const auto& c : cases) {
    app.expectedCodeSignature = c.expectedSignature;
    messages();
    expectCleanFailure(c.output);
    EXPECT_THAT(
        lastOf(messages(), 4),
        ElementsAre(
            c.found,
            "Error: The signing information for Slides does not match the expected signing info. Cancelling the update",
            "Removing downloads...", "Allowing idle sleep..."));
  }
}

TEST_F(PipelineFlow, EachRefusalHasItsLinesAndLeavesNothing) {
  addToCatalog("Slides");
  const AppBlueprints good = vorlu.catalog.entries.front();
  install("Slides");
  using Arrange = std::function<void(AppBlueprints&)>;
  const auto refused = [&](const std::string& what, const std::string& cancelText, const Arrange& arrange,
                           const Lines& lastLines) {
    vorlu.catalog.entries.front() = good;
    serve(vorlu.catalog.entries.front(), appArchive("Slides.app", "2.0"));
    arrange(vorlu.catalog.entries.front());
    messages();
    expectCleanFailure(what);
    const Lines expected = joined(lastLines, {"Allowing idle sleep..."});
    EXPECT_EQ(lastOf(messages(), expected.size()), expected) << what;
    EXPECT_EQ(vorlu.progress.cancelText, cancelText) << what;
  };
  const std::string wrong(64, '0');
  const std::string contact = site.supportContact();
  const Lines notFound = {"Error: No valid installers were found for Slides",
                          fmt::format("Please contact {} for further assistance", contact), "Removing downloads..."};
  const std::string filesMissing =
      "The Slides install was cancelled because the required install files could not be found";
  const std::string unsupported = "The update was cancelled because Slides is unsupported on macOS 14.5.0";
  const std::string incompatible =
      "Error: Slides is not compatible with this macOS version. Installed OS: 14.5.0, Required: ";

  refused(
      "wrong hash", "The Slides install was cancelled because the installer file could not be verified",
      [&](auto& app) { app.universalInstallerHash = wrong; },
      {"Error: The sha256 hash for the Slides installer does not match the expected hash.", "Expected hash: " + wrong,
       "Actual hash: " + sha256(appArchive("Slides.app", "2.0")), "Cancelling the update", "Removing downloads..."});
  const std::string archive = paths::downloads + "/Slides-v2.0.zip";
  refused(
      "login page", filesMissing, [&](auto& app) { serve(app, "login page"); },
      joined({"Error: Could not extract " + archive + " - bsdtar: Error opening archive: Unrecognized archive format"},
             notFound));
  const std::pair<const char*, std::optional<Strings>> badItems[] = {
      {"missing item", Strings{"REGEX:^Sheets.*[.]app$"}}, {"no items", std::nullopt}, {"bad pattern", {{"REGEX:("}}}};
  for (const auto& [what, items] : badItems)
    refused(
        what, filesMissing, [&, list = items](auto& app) { app.sourceItems = list; }, notFound);
  refused("unknown type", "The Slides install was cancelled because the downloaded file type was not recognised",
          [](auto& app) { app.downloadFileType = "../rar"; },
          {"Slides is not running. Continuing...", "Error: Unrecognised download file type",
           "Unrecognised file type: ../rar",
           "Please ensure Vorlu is up to date and try again. If the problem persists, please contact " + contact,
           "Removing downloads..."});
  refused("minimum macOS", unsupported + ". Please upgrade to at least macOS 14.5.1",
          [](auto& app) { app.minimumOS = "14.5.1"; },
          {"Checking macOS version requirements...", "14.5.0 is below the minimum required macOS version (14.5.1)",
           incompatible + "14.5.1 or higher. Cancelling the update"});
  refused("maximum macOS", unsupported, [](auto& app) { app.minimumOS = "14.5.0", app.maximumOS = "9.0"; },
          {"14.5.0 is the same or greater than the minimum required macOS version (14.5.0)",
           "14.5.0 is above the maximum allowed macOS version (9.0)",
           incompatible + "9.0 or lower. Cancelling the update"});
  refused("no URL", "The update was cancelled because Slides because a download URL could not be obtained",
          [](auto& app) { app.universalDownloadURL = ""; },
          {"Preventing idle sleep...", "Error: Universal download URL not found for Slides. Cancelling update..."});
  refused(
      "no build for this processor", "The update was cancelled because Slides is not available for Intel Macs",
      [this](auto& app) { app.architecture = "arch", app.appleSiliconDownloadURL = "http://x", mac.device.cpu = 7; },
      {"Preventing idle sleep...", "Error: Slides is not available for Intel Macs. Cancelling update..."});
  mac.device.cpu = 12;
  refused("other processor", "The update was cancelled because Slides is not available for Apple Silicon Macs",
          [](auto& app) { app.architecture = "ARCH", app.intelDownloadURL = "http://x"; },
          {"Preventing idle sleep...", "Error: Slides is not available for Apple Silicon Macs. Cancelling update..."});
  refused("as much disk space as is needed",
          "The update was cancelled because there is insufficient free disk space. Please free at least 200000000 KB "
          "and try again",
          [](auto& app) { app.installerSize = app.installedSize = 100'000'000; },
          {"Checking for sufficient disk space for the Slides update...",
           "Error: Not enough disk space available to download and install the Slides update, Required: 200000000 KB, "
           "Available: 200000000 KB"});
}

TEST_F(PipelineFlow, InstallsOnlyWhatMayBeInstalled) {
  addToCatalog("Slides").installsAllowed = false;
  InstallRequest request = updateOf("Slides");
  request.operationLabel = "install";
  request.enforceInstallable = true;
  EXPECT_EQ(runInstallPipeline(vorlu, request), InstallOutcome::failed);
  EXPECT_THAT(messages(), ElementsAre("Preventing idle sleep...", "Error: Slides is not installable via Vorlu",
                                      "Allowing idle sleep..."));
  EXPECT_EQ(vorlu.progress.cancelText, "The install was cancelled because Slides is not available for installs");
}

TEST_F(PipelineFlow, LimitsThatAreJustMetPass) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  app.installerSize = 100'000'000;
  app.installedSize = 99'999'999;
  app.minimumOS = app.maximumOS = "14.5.0";
  EXPECT_EQ(update(), InstallOutcome::installed);
  EXPECT_THAT(messages(), Contains("14.5.0 is the same or below the maximum allowed macOS Version (14.5.0)"));
}

TEST_F(PipelineFlow, TriesADownloadTwentyTimes) {
  addToCatalog("Slides");
  install("Slides");
  answers.clear();
  expectCleanFailure("404");
  const Lines attempt = {"Downloading universal Slides installer...",
                         fmt::format("Could not download file from URL {}. Status code: 404", server.url("/0.zip"))};
  Lines expected = attempt;
  for (int number = 2; number <= 20; ++number) {
    expected.push_back(fmt::format("The Slides download failed. Retrying (attempt {} of 20)", number));
    expected = joined(expected, attempt);
  }
  expected.push_back(
      "Error: The Slides installer could not be downloaded. Please ensure the network connection is stable and verify "
      "there are no network restrictions then retry the update");
  expected.push_back("Allowing idle sleep...");
  EXPECT_EQ(lastOf(messages(), expected.size()), expected);
  EXPECT_EQ(server.requests().size(), 20U);
  EXPECT_EQ(vorlu.progress.cancelText,
            "Slides could not be downloaded. Please check your internet connection and try again");
}

TEST_F(PipelineFlow, RecoversFromATransferThatBreaks) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  app.universalDownloadURL = server.url("/My Slides 1.zip");
  app.requestHeaderKey = "X-Key";
  app.requestHeaderValue = "value";
  const std::string archive = appArchive("Slides.app", "2.0");
  answers["/My Slides 1.zip"] = reply(200, archive, {}, {.dropAfter = archive.size() - 2000});
  EXPECT_EQ(update(), InstallOutcome::failed);
  EXPECT_THAT(leftovers(), IsEmpty());
  answers["/My Slides 1.zip"] = reply(200, archive);
  EXPECT_EQ(update(), InstallOutcome::installed);
  EXPECT_EQ(server.requests().back().header("X-Key"), "value");
}

TEST_F(PipelineFlow, StaleFileCostsAnInstallItsFirstAttempt) {
  addToCatalog("Slides");
  const std::string file = paths::downloads + "/Slides-v2.0.zip";
  mac.write(file, "stale");
  InstallRequest request;
  request.appName = "Slides";
  request.enforceInstallable = true;
  request.operationLabel = "install";
  EXPECT_EQ(runInstallPipeline(vorlu, request), InstallOutcome::installed);
  EXPECT_THAT(messages(), IsSupersetOf({"Requested download already exists at path: " + file,
                                        std::string("Removing previous download..."),
                                        std::string("The Slides download failed. Retrying (attempt 2 of 20)")}));
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(installedVersion("Slides"), "2.0");
}

TEST_F(PipelineFlow, CachedInstallerIsVerifiedAllTheSame) {
  addToCatalog("Slides");
  install("Slides");
  mac.write(paths::downloads + "/Slides-v2.0.zip", appArchive("Slides.app", "6.6"));
  expectCleanFailure("changed in the cache");
  EXPECT_THAT(messages(), Contains("Slides update found in the local download cache. Skipping download"));
  EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(PipelineFlow, FileChangedAfterItsDownloadIsReadAgain) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  // The check whether the app runs comes between download and verification.
  app.appType = "tool";
  app.blockingApps = Strings{"slides"};
  const auto change = [&](const Command&) {
    mac.write(paths::downloads + "/Slides-v2.0.zip", appArchive("Slides.app", "6.6"));
  };
  mac.processes.on("/usr/bin/pgrep -x slides", {.output = "", .effect = change});
  expectCleanFailure("changed after the download");
}

TEST_F(PipelineFlow, LeavesAnAppInUseAlone) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  vorlu.updates.currentUpdate.appName = "Slides";
  mac.applications.running = {"com.example.Slides"};
  EXPECT_EQ(update(), InstallOutcome::inUse);
  EXPECT_THAT(lastOf(messages(), 3),
              ElementsAre("Checking if Slides is running....", "Slides is currently in use. Skipping the update...",
                          "Allowing idle sleep..."));
  EXPECT_TRUE(vorlu.progress.appInUseSeen && !vorlu.progress.installFailed);
  ASSERT_EQ(vorlu.updates.skippedUpdates.size(), 1U);
  EXPECT_EQ(vorlu.updates.skippedUpdates[0].appName, "Slides");
  EXPECT_THAT(leftovers(), ElementsAre("Slides-v2.0.zip")) << "kept for the time it isn't in use";

  app.updateWhileRunning = true;
  mac.consoleUser.user = "o'neil";
  mac.processes.onPrefix("zsh: ", {});
  EXPECT_EQ(update(), InstallOutcome::installed);
  EXPECT_THAT(lastOf(tools(), 2),
              ElementsAre("zsh: killall run", "zsh: su 'o'\\''neil' -c 'open -a \"/Applications/Slides.app\"'"));
}

TEST_F(PipelineFlow, NothingOfOneAppReachesTheNext) {
  AppBlueprints& bad = addToCatalog("Slides");
  const AppBlueprints& good = addToCatalog("Notes");
  install("Slides");
  install("Notes");
  bad.blockingApps = Strings{"slides helper"};
  bad.preInstallScript = "echo from slides";
  bad.universalInstallerHash = "wrong";
  EXPECT_EQ(update("Slides"), InstallOutcome::failed);
  messages();
  EXPECT_EQ(update("Notes"), InstallOutcome::installed);
  EXPECT_EQ(messages(), linesOfUpdate("Notes", *good.universalInstallerHash));
  EXPECT_FALSE(vorlu.progress.installFailed || vorlu.progress.downloadFailed);
  EXPECT_EQ(vorlu.progress.cancelText, "");
  EXPECT_EQ(update("Unknown"), InstallOutcome::failed);
  EXPECT_THAT(vorlu.updates.failedUpdates, ElementsAre("server.Slides", "Unknown"));
}

TEST_F(PipelineFlow, RunsScriptsAroundTheCopy) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  app.preInstallScript = "#!/bin/bash\nif true; then\necho a;\nfi\nexit 0";
  app.postInstallScript = "case x in\nx) echo done ;;\nesac";
  Lines versions;
  const auto noteVersion = [&](const Command&) { versions.push_back(installedVersion("Slides")); };
  mac.processes.on("/bin/bash -c 'if true; then echo a;fi'",
                   {.output = "", .status = 1, .effect = noteVersion, .pieces = {"one\ntw", "o\n\n  \n", "three"}});
  mac.processes.on("zsh: case x in;x) echo done ;;esac", {.output = "", .effect = noteVersion, .timedOut = true});
  EXPECT_EQ(update(), InstallOutcome::installed);
  EXPECT_THAT(versions, ElementsAre("1.0", "2.0"));
  Lines lines = lastOf(messages(), 9);
  lines.resize(6);
  EXPECT_THAT(lines,
              ElementsAre("Running pre-install scripts...", "one", "two", "three", "Running post-install scripts...",
                          "Error: /bin/zsh did not end within 1800 seconds and was stopped"));
}

TEST_F(PipelineFlow, FullDiskAtAnyWriteLeavesAWorkingApp) {
  addToCatalog("Slides");
  install("Slides");
  int failures = 0;
  for (int number = 1;; ++number) {
    mac.files.failWritesFrom(number);
    const InstallOutcome outcome = update();
    mac.files.heal();
    EXPECT_THAT(*mac.files.list("/Applications"), ElementsAre("Slides.app")) << number;
    EXPECT_THAT(mac.power.held, IsEmpty());
    if (outcome == InstallOutcome::installed) break;
    EXPECT_EQ(installedVersion("Slides"), "1.0") << number;
    ASSERT_LT(++failures, 200);
  }
  EXPECT_GT(failures, 5);
  EXPECT_EQ(installedVersion("Slides"), "2.0");
}

}  // namespace
}  // namespace vorlu::test
