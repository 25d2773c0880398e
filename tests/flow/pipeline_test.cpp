#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>

#include "tests/unit/install/install_run.h"
#include "vorlu/state/end_run.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

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
    EXPECT_FALSE(mac.exists(paths::run + "/placement"));
    vorlu.updates.failedUpdates.clear();
  }
};

TEST_F(PipelineFlow, UpdatesByHash) {
  const AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  EXPECT_EQ(update(), InstallOutcome::installed);
  EXPECT_THAT(messages(), ElementsAreArray(linesOfUpdate("Slides", *app.universalInstallerHash)));
  const std::string file = paths::downloads + "/Slides-v2.0.zip";
  EXPECT_THAT(tools(), ElementsAre("/usr/bin/tar -xf '" + file + "' -C '" + paths::output + "'"));
  EXPECT_EQ(installedVersion("Slides"), "2.0");
  EXPECT_THAT(leftovers(), IsEmpty());
  EXPECT_THAT(*mac.files.list("/Applications"), ElementsAre("Slides.app"));
  EXPECT_THAT(mac.power.calls, ElementsAre("create Initialising Slides update", "release 1"));
  EXPECT_EQ(mac.files.info("/Applications/Slides.app/Contents/Link")->kind, FileKind::link);
  EXPECT_EQ(mac.files.info("/Applications/Slides.app/Contents/Info.plist")->mode, 0755) << "the catalog's mode";
}

TEST_F(PipelineFlow, SignatureAloneDecidesWhenItIsAskedFor) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  app.verifySignature = std::nullopt;  // absent asks for it
  app.universalInstallerHash = "wrong";
  app.expectedCodeSignature = "Example Inc (ABCDE12345)";
  mac.processes.onPrefix(
      "/usr/bin/codesign",
      {.output = "Identifier=com.example\n  Authority=Developer ID Application: Example Inc (ABCDE12345)\n"
                 "Authority=Developer ID Certification Authority: Other\n"});
  EXPECT_EQ(update(), InstallOutcome::installed);
  Lines expected = linesOfUpdate("Slides", "wrong");
  const Lines proof = {"Verifying signing information...", "Found signature: Example Inc (ABCDE12345)",
                       "Signing verification complete. The App matches the expected code signing. Continuing..."};
  expected.insert(expected.begin() + 12, proof.begin(), proof.end());
  EXPECT_THAT(messages(), ElementsAreArray(expected));
  EXPECT_THAT(tools(), Contains("/usr/bin/codesign -dv --verbose=4 '" + paths::output + "/Slides.app'"));
}

TEST_F(PipelineFlow, RefusesWhatIsNotSignedAsExpected) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  app.verifySignature = true;
  const struct {
    const char* expectedSignature;
    const char* output;
    Lines found;
  } cases[] = {
      {"Example (A)", "Authority=Developer ID Application: Other (B)\n", {"Found signature: Other (B)"}},
      {"Example (A)", "x: code object is not signed at all\n", {"Error: App is not signed"}},
      {"Example (A)", "Authority=Software Signing\n", {}},
      {"", "Authority=Developer ID Application: \n", {}},
      {"", "Authority=Developer ID Application: Example (A)\n", {"Found signature: Example (A)"}},
  };
  for (const auto& c : cases) mac.processes.onPrefix("/usr/bin/codesign -dv", {.output = c.output});
  for (const auto& c : cases) {
    app.expectedCodeSignature = c.expectedSignature;
    messages();
    expectCleanFailure(c.output);
    Lines lines = messages();
    lines.erase(lines.begin(), std::find(lines.begin(), lines.end(), "Verifying signing information...") + 1);
    Lines expected = c.found;
    expected.insert(expected.end(),
                    {"Error: The signing information for Slides does not match the expected signing info. Cancelling "
                     "the update",
                     "Removing downloads...", "Allowing idle sleep..."});
    EXPECT_THAT(lines, ElementsAreArray(expected)) << c.output;
  }
}

TEST_F(PipelineFlow, EachRefusalHasItsLinesAndLeavesNothing) {
  const std::string wrong(64, '0');
  const struct {
    const char* what;
    std::function<void(AppBlueprints&)> arrange;
    Lines lines;  ///< the last ones
    const char* cancelText;
  } cases[] = {
      {"wrong hash",
       [&](AppBlueprints& app) { app.universalInstallerHash = wrong; },
       {"Error: The sha256 hash for the Slides installer does not match the expected hash.", "Expected hash: " + wrong,
        "Actual hash: " + sha256(appArchive("Slides.app", "2.0")), "Cancelling the update", "Removing downloads...",
        "Allowing idle sleep..."},
       "The Slides install was cancelled because the installer file could not be verified"},
      {"login page instead of an installer",
       [&](AppBlueprints& app) {
         serve(app, "login page");
         app.universalInstallerHash = wrong;
       },
       {"Error: Could not extract " + paths::downloads +
            "/Slides-v2.0.zip - bsdtar: Error opening archive: Unrecognized archive format",
        "Error: No valid installers were found for Slides",
        fmt::format("Please contact {} for further assistance", site.supportContact()), "Removing downloads...",
        "Allowing idle sleep..."},
       "The Slides install was cancelled because the required install files could not be found"},
      {"missing source item",
       [](AppBlueprints& app) { app.sourceItems = Strings{"REGEX:^Sheets.*[.]app$"}; },
       {"Extraction complete", "Error: No valid installers were found for Slides",
        fmt::format("Please contact {} for further assistance", site.supportContact()), "Removing downloads...",
        "Allowing idle sleep..."},
       "The Slides install was cancelled because the required install files could not be found"},
      {"no source items",
       [](AppBlueprints& app) { app.sourceItems = std::nullopt; },
       {"Extraction complete", "Error: No valid installers were found for Slides",
        fmt::format("Please contact {} for further assistance", site.supportContact()), "Removing downloads...",
        "Allowing idle sleep..."},
       "The Slides install was cancelled because the required install files could not be found"},
      {"pattern that doesn't compile",
       [](AppBlueprints& app) { app.sourceItems = Strings{"REGEX:("}; },
       {"Error: No valid installers were found for Slides",
        fmt::format("Please contact {} for further assistance", site.supportContact()), "Removing downloads...",
        "Allowing idle sleep..."},
       "The Slides install was cancelled because the required install files could not be found"},
      {"unknown type",
       [](AppBlueprints& app) { app.downloadFileType = "../rar"; },
       {"Slides is not running. Continuing...", "Error: Unrecognised download file type",
        "Unrecognised file type: ../rar",
        fmt::format("Please ensure Vorlu is up to date and try again. If the problem persists, please contact {}",
                    site.supportContact()),
        "Removing downloads...", "Allowing idle sleep..."},
       "The Slides install was cancelled because the downloaded file type was not recognised"},
      {"minimum macOS",
       [](AppBlueprints& app) { app.minimumOS = "14.5.1"; },
       {"Checking macOS version requirements...", "14.5.0 is below the minimum required macOS version (14.5.1)",
        "Error: Slides is not compatible with this macOS version. Installed OS: 14.5.0, Required: 14.5.1 or higher. "
        "Cancelling the update",
        "Allowing idle sleep..."},
       "The update was cancelled because Slides is unsupported on macOS 14.5.0. Please upgrade to at least macOS "
       "14.5.1"},
      {"maximum macOS",
       [](AppBlueprints& app) { app.minimumOS = "14.5.0", app.maximumOS = "9.0"; },
       {"Checking macOS version requirements...",
        "14.5.0 is the same or greater than the minimum required macOS version (14.5.0)",
        "14.5.0 is above the maximum allowed macOS version (9.0)",
        "Error: Slides is not compatible with this macOS version. Installed OS: 14.5.0, Required: 9.0 or lower. "
        "Cancelling the update",
        "Allowing idle sleep..."},
       "The update was cancelled because Slides is unsupported on macOS 14.5.0"},
      {"no URL",
       [](AppBlueprints& app) { app.universalDownloadURL = ""; },
       {"Preventing idle sleep...", "Error: Universal download URL not found for Slides. Cancelling update...",
        "Allowing idle sleep..."},
       "The update was cancelled because Slides because a download URL could not be obtained"},
      {"not for Apple Silicon",
       [](AppBlueprints& app) { app.architecture = "ARCH", app.intelDownloadURL = "http://x"; },
       {"Preventing idle sleep...", "Error: Slides is not available for Apple Silicon Macs. Cancelling update...",
        "Allowing idle sleep..."},
       "The update was cancelled because Slides is not available for Apple Silicon Macs"},
      {"disk space equal to what is needed",
       [](AppBlueprints& app) { app.installerSize = 100'000'000, app.installedSize = 100'000'000; },
       {"Checking for sufficient disk space for the Slides update...",
        "Error: Not enough disk space available to download and install the Slides update, Required: 200000000 KB, "
        "Available: 200000000 KB",
        "Allowing idle sleep..."},
       "The update was cancelled because there is insufficient free disk space. Please free at least 200000000 KB and "
       "try again"},
  };
  addToCatalog("Slides");
  const AppBlueprints good = vorlu.catalog.entries.front();
  install("Slides");
  for (const auto& c : cases) {
    vorlu.catalog.entries.front() = good;
    serve(vorlu.catalog.entries.front(), appArchive("Slides.app", "2.0"));
    c.arrange(vorlu.catalog.entries.front());
    messages();
    expectCleanFailure(c.what);
    Lines lines = messages();
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(std::min(lines.size(), c.lines.size())));
    EXPECT_THAT(lines, ElementsAreArray(c.lines)) << c.what;
    EXPECT_EQ(vorlu.progress.cancelText, c.cancelText);
  }
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
  const std::string url = server.url("/0.zip");
  Lines expected = {"Downloading universal Slides installer...",
                    fmt::format("Could not download file from URL {}. Status code: 404", url)};
  for (int attempt = 2; attempt <= 20; ++attempt) {
    expected.push_back(fmt::format("The Slides download failed. Retrying (attempt {} of 20)", attempt));
    expected.insert(expected.end(), {expected[0], expected[1]});
  }
  expected.insert(
      expected.end(),
      {"Error: The Slides installer could not be downloaded. Please ensure the network connection is stable "
       "and verify there are no network restrictions then retry the update",
       "Allowing idle sleep..."});
  Lines lines = messages();
  lines.erase(lines.begin(), lines.begin() + 4);
  EXPECT_THAT(lines, ElementsAreArray(expected));
  EXPECT_EQ(server.requests().size(), 20U);
}

TEST_F(PipelineFlow, RecoversFromATransferThatBreaks) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  app.universalDownloadURL = server.url("/My Slides 1.zip");
  app.requestHeaderKey = "X-Key";
  app.requestHeaderValue = "value";
  RawServer::Reply whole = reply(200, appArchive("Slides.app", "2.0"));
  RawServer::Reply broken = whole;
  broken.bytes.resize(broken.bytes.size() - 2000);
  answers["/My%20Slides%201.zip"] = broken;
  EXPECT_EQ(update(), InstallOutcome::failed);
  EXPECT_THAT(leftovers(), IsEmpty());
  answers["/My%20Slides%201.zip"] = whole;
  EXPECT_EQ(update(), InstallOutcome::installed);
  EXPECT_THAT(server.requests().back(), ::testing::HasSubstr("X-Key: value\r\n"));
}

TEST_F(PipelineFlow, StaleFileCostsAnInstallItsFirstAttempt) {
  addToCatalog("Slides");
  const std::string file = paths::downloads + "/Slides-v2.0.zip";
  mac.write(file, "stale");
  InstallRequest request = updateOf("Slides");
  request.enforceInstallable = true;
  request.operationLabel = "install";
  request.installedPath.clear();
  request.checkRunning = false;
  EXPECT_EQ(runInstallPipeline(vorlu, request), InstallOutcome::installed);
  Lines lines = messages();
  lines.erase(lines.begin(), lines.begin() + 4);
  lines.resize(6);
  EXPECT_THAT(lines, ElementsAre("Downloading universal Slides installer...",
                                 "Requested download already exists at path: " + file, "Removing previous download...",
                                 "The Slides download failed. Retrying (attempt 2 of 20)",
                                 "Downloading universal Slides installer...", "Download complete"));
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
  addToCatalog("Slides");
  install("Slides");
  // The check whether the app runs comes between download and verification.
  vorlu.catalog.entries[0].appType = "tool";
  vorlu.catalog.entries[0].blockingApps = Strings{"slides"};
  mac.processes.on("/usr/bin/pgrep -x slides", {.output = "", .effect = [&](const Command&) {
                                                  mac.write(paths::downloads + "/Slides-v2.0.zip",
                                                            appArchive("Slides.app", "6.6"));
                                                }});
  expectCleanFailure("changed after the download");
}

TEST_F(PipelineFlow, LeavesAnAppInUseAlone) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  vorlu.updates.currentUpdate.appName = "Slides";
  mac.applications.running = {"com.example.Slides"};
  EXPECT_EQ(update(), InstallOutcome::inUse);
  const Lines lines = messages();
  EXPECT_THAT(Lines(lines.end() - 3, lines.end()),
              ElementsAre("Checking if Slides is running....", "Slides is currently in use. Skipping the update...",
                          "Allowing idle sleep..."));
  EXPECT_FALSE(vorlu.progress.installFailed);
  EXPECT_TRUE(vorlu.progress.appInUseSeen);
  ASSERT_EQ(vorlu.updates.skippedUpdates.size(), 1U);
  EXPECT_EQ(vorlu.updates.skippedUpdates[0].appName, "Slides");
  EXPECT_THAT(leftovers(), ElementsAre("Slides-v2.0.zip")) << "kept for the time it isn't in use";

  InstallRequest quiet = updateOf("Slides");
  quiet.suppressInUseNotice = true;
  EXPECT_EQ(runInstallPipeline(vorlu, quiet), InstallOutcome::inUse);
  EXPECT_THAT(messages(), ::testing::Not(Contains("Slides is currently in use. Skipping the update...")));

  app.updateWhileRunning = true;
  mac.consoleUser.user = "o'neil";
  mac.processes.onMatch("^zsh: ", {});
  tools();
  EXPECT_EQ(update(), InstallOutcome::installed);
  Strings shell = tools();
  shell.erase(shell.begin(), shell.end() - 2);
  EXPECT_THAT(shell, ElementsAre("zsh: killall run", "zsh: su 'o'\\''neil' -c 'open -a \"/Applications/Slides.app\"'"));
}

TEST_F(PipelineFlow, ReportsAVersionThatDidNotChange) {
  AppBlueprints& app = addToCatalog("Slides");
  install("Slides");
  serve(app, appArchive("Slides.app", "1.0"));
  EXPECT_EQ(update(), InstallOutcome::failed);
  const Lines lines = messages();
  EXPECT_THAT(Lines(lines.end() - 3, lines.end()),
              ElementsAre("Error: The Slides version has not changed since the update attempt. Version installed: 1.0",
                          "Removing downloads...", "Allowing idle sleep..."));
  EXPECT_THAT(vorlu.updates.failedUpdates, ElementsAre("server.Slides"));
  EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(PipelineFlow, NothingOfOneAppReachesTheNext) {
  AppBlueprints& bad = addToCatalog("Slides");
  addToCatalog("Notes");
  install("Slides");
  install("Notes");
  bad.blockingApps = Strings{"slides helper"};
  bad.preInstallScript = "echo from slides";
  bad.universalInstallerHash = "wrong";
  EXPECT_EQ(update("Slides"), InstallOutcome::failed);
  messages();
  EXPECT_EQ(update("Notes"), InstallOutcome::installed);
  EXPECT_THAT(messages(), ElementsAreArray(linesOfUpdate("Notes", *vorlu.catalog.entries[1].universalInstallerHash)));
  EXPECT_FALSE(vorlu.progress.installFailed);
  EXPECT_FALSE(vorlu.progress.downloadFailed);
  EXPECT_EQ(vorlu.progress.cancelText, "");
  EXPECT_THAT(vorlu.progress.appBinaries, ElementsAre("Notes"));
  EXPECT_THAT(vorlu.updates.failedUpdates, ElementsAre("server.Slides"));
  EXPECT_EQ(update("Unknown"), InstallOutcome::failed);
  EXPECT_THAT(vorlu.updates.failedUpdates, ElementsAre("server.Slides", "Unknown"));
}

TEST_F(PipelineFlow, CopesWithNamesThatShellsAndPathsMisread) {
  for (const std::string name :
       {"My Slides", "$HOME \"x\" `id`", "a;b's & (c)", "Präsentation 😀", "-rf", "REG*EX [x]"}) {
    addToCatalog(name);
    install(name);
    EXPECT_EQ(update(name), InstallOutcome::installed) << name;
    EXPECT_EQ(installedVersion(name), "2.0") << name;
    EXPECT_THAT(leftovers(), IsEmpty()) << name;
  }
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
  const Lines lines = messages();
  const auto from = std::find(lines.begin(), lines.end(), "Running pre-install scripts...");
  EXPECT_THAT(Lines(from, lines.end() - 3),
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
