#include <fmt/format.h>

#include <algorithm>
#include <regex>

#include "tests/unit/install/install_run.h"
#include "vorlu/install/download_type.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::EndsWith;
using ::testing::IsEmpty;

const std::string image = "/Volumes/Slides";
const char* const signedBy = "Example Inc (ABCDE12345)";

/// Slides as any type of download, opened and installed by scripted tools that leave what real ones leave.
class DownloadTypes : public InstallRun {
 protected:
  DownloadTypes() : InstallRun(false), slides(addToCatalog("Slides")) {
    mac.makeFolder(paths::components);
    mac.processes.onPrefix("/usr/bin/tar -xf",
                           {.output = "", .effect = [this](const Command& command) { unpack(command.arguments[1]); }});
    mac.processes.onPrefix("/usr/bin/hdiutil convert", {.output = "", .effect = [this](const Command& command) {
                                                          mac.write(command.arguments.back(), "plain image");
                                                        }});
    mac.processes.onPrefix("/usr/bin/hdiutil attach",
                           {.output = "/dev/disk4s1\tApple_HFS\t" + image + "\n", .effect = [this](const Command&) {
                              mac.addApplication(image + "/Slides.app", "com.example.Slides", "2.0");
                              mac.write(image + "/inner.pkg", "package");
                            }});
    mac.processes.on("/usr/bin/hdiutil detach " + image,
                     {.output = "\"disk4\" ejected.\n", .effect = [this](const Command&) { mac.files.remove(image); }});
    mac.processes.onPrefix("/usr/sbin/installer", {.output = "",
                                                   .effect = [this](const Command&) { placeVersion("2.0"); },
                                                   .pieces = {"installer:%50.0\n", "installer:%99.0\n"}});
    mac.processes.onPrefix("/usr/sbin/pkgutil",
                           {.output = fmt::format("   1. Developer ID Installer: {}\n", signedBy)});
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"});
    placeVersion("1.0");
  }

  void placeVersion(const std::string& version) { mac.addApplication(pathOf("Slides"), "com.example.Slides", version); }

  void unpack(const std::string& archive) {
    const std::string type = *slides.downloadFileType;
    if (type == "pkgInZIP") return mac.write(paths::output + "/inner.pkg", "package");
    if (type.starts_with("dmg")) return mac.write(paths::output + "/inner.dmg", "image");
    if (type == "zipInTBZ" && !archive.starts_with(paths::output))
      return mac.write(paths::output + "/inner.zip", "archive");
    mac.addApplication(paths::output + "/Slides.app", "com.example.Slides", "2.0");
  }

  InstallOutcome run(bool interactive, bool writeProgress = false) {
    mac.files.remove(paths::dialogCommandFile);
    vorlu.progress.installProgress = 0;
    messages();
    tools();
    InstallRequest request = updateOf("Slides");
    request.interactive = interactive;
    request.writeProgress = writeProgress;
    return runInstallPipeline(vorlu, request);
  }

  /// What the tools did, as in "attach d/Slides-v2.0.dmg": "d" and "o" are the cache and the Output directory.
  Strings deeds() {
    static const std::pair<std::regex, const char*> words[] = {
        {std::regex(".*/hdiutil detach .*"), "detach"},
        {std::regex(".*/hdiutil attach -nobrowse "), "attach "},
        {std::regex(".*/hdiutil convert -quiet (.*) -format UDTO -o .*[.]cdr'?"), "convert $1"},
        {std::regex(".*/pkgutil --check-signature "), "check "},
        {std::regex(".*/installer -verboseR -pkg (.*) -target /"), "install $1"},
        {std::regex(".*/installer -verboseR -applyChoiceChangesXML .* -pkg (.*) -target /"), "choose from $1"},
        {std::regex(".*/tar -xf (.*) -C .*/Output'"), "unpack $1"},
        {std::regex("'?/Library/[^']*/Run/Downloads"), "d"},
        {std::regex("'?/Library/[^']*/Run/Output"), "o"},
        {std::regex("'"), ""}};
    Strings commands = tools();
    for (std::string& command : commands)
      for (const auto& [line, deed] : words) command = std::regex_replace(command, line, deed);
    return commands;
  }

  AppBlueprints& slides;
};

TEST_F(DownloadTypes, EachIsInstalledAndMovesTheBarByItsSteps) {
  const std::string package = image + "/inner.pkg";
  const struct {
    const char* type;
    Strings deeds;
  } cases[] = {
      {"pkg", Strings{"check d/Slides-v2.0.pkg", "install d/Slides-v2.0.pkg"}},
      {"dmg", Strings{"attach d/Slides-v2.0.dmg", "detach"}},
      {"dmgWithEULA", {"convert d/Slides-v2.0.dmg", "attach d/Slides-v2.0.cdr", "detach"}},
      {"pkgInDMG", {"attach d/Slides-v2.0.dmg", "check " + package, "install " + package, "detach"}},
      {"pkgInDMGWithEULA",
       {"convert d/Slides-v2.0.dmg", "attach d/Slides-v2.0.cdr", "check " + package, "install " + package, "detach"}},
      {"zip", Strings{"unpack d/Slides-v2.0.zip"}},
      {"tbz", Strings{"unpack d/Slides-v2.0.tbz"}},
      {"zipInTBZ", Strings{"unpack d/Slides-v2.0.tbz", "unpack o/inner.zip"}},
      {"pkgInZIP", {"unpack d/Slides-v2.0.zip", "check o/inner.pkg", "install o/inner.pkg"}},
      {"dmgInZIP", {"unpack d/Slides-v2.0.zip", "attach o/inner.dmg", "detach"}},
      {"dmgWithEULAInZIP", {"unpack d/Slides-v2.0.zip", "convert o/inner.dmg", "attach o/inner.cdr", "detach"}},
  };
  slides.expectedCodeSignature = signedBy;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.type);
    slides.downloadFileType = c.type;
    const bool plainName = std::string_view(c.type) == "zipInTBZ";
    slides.nestedDownloadFiles = plainName ? Strings{"inner.zip"} : Strings{"missing", "REGEX:^inner[.]"};
    slides.verifySignature = std::string_view(c.type).starts_with("pkg");
    for (const bool interactive : {true, false}) {
      placeVersion("1.0");
      EXPECT_EQ(run(interactive, true), InstallOutcome::installed);
      EXPECT_EQ(installedVersion("Slides"), "2.0");
      EXPECT_THAT(deeds(), ElementsAreArray(c.deeds));
      mac.files.remove(paths::downloads + "/Slides-v2.0.cdr");
      EXPECT_THAT(leftovers(), IsEmpty());
      EXPECT_FALSE(mac.exists(image));
      EXPECT_EQ(vorlu.progress.installProgress, progressSteps(c.type, interactive));
    }
  }
}

TEST_F(DownloadTypes, EachFailureHasItsLinesAndCleansUp) {
  const std::string missing =
      fmt::format("Error: No valid installers were found for Slides|Please contact {} for further assistance",
                  site.supportContact());
  const std::string otherSigner = fmt::format(
      "Found signature: {}|Error: The signing information for Slides does not "
      "match the expected signing info. Cancelling the update",
      signedBy);
  const auto signedByOther = [&] { slides.verifySignature = true, slides.expectedCodeSignature = "Other"; };
  const std::string detached = "|Detaching disk image...|\"disk4\" ejected.";
  const std::string removed = "|Removing downloads...";
  const struct {
    const char* type;
    std::function<void()> arrange;
    std::string lines;   ///< the last ones before the Mac may sleep again
    const char* reason;  ///< in the cancel text
    Strings left;
  } cases[] = {
      {"pkg",
       signedByOther,
       "Verifying signing information...|" + otherSigner + "|Removing downloaded items...",
       "the developer could not be verified",
       {}},
      {"pkgInDMG",
       signedByOther,
       "Verifying signing information for inner.pkg...|" + otherSigner + detached + removed,
       "the developer could not be verified",
       {}},
      {"pkgInZIP",
       [&] {
         slides.nestedDownloadFiles = Strings{"REGEX:inner", "missing.pkg"};
       },
       "50.0 percent complete|99.0 percent complete|" + missing + removed,
       "the nested installer file could not be found",
       {}},
      {"dmgInZIP",
       [&] {
         slides.nestedDownloadFiles = Strings{"inner.dmg", "../x"};
       },
       "Successfully mounted the Disk Image|" + missing + detached + removed,
       "the nested installer file could not be found",
       {}},
      {"dmg",
       [&] { slides.sourceItems = Strings{"Other.app"}; },
       missing + detached + removed,
       "the required install files could not be found",
       {}},
      {"dmg",
       [&] { slides.universalInstallerHash = "0"; },
       "Cancelling the update" + detached + removed,
       "the installer file could not be verified",
       {}},
      {"dmgWithEULAInZIP",
       [&] { mac.processes.onPrefix("/usr/bin/hdiutil convert -q", {.output = "", .status = 1}); },
       "Converting disk image to mountable format. Please wait...|"
       "Error: Disk image could not be converted to a mountable format",
       "the disk image could not be converted. Please ensure no disk image restrictions are configured and try again",
       {"Slides-v2.0.zip"}},
      {"pkg",
       [&] {
         slides.installerChoices = "<plist/>";
         mac.files.remove(paths::output);
         mac.write(paths::output, "a file in the folder's place");
       },
       "Error: Could not write the required choices XML for the Slides installer. Cancelling the update",
       "the required install files could not be written",
       {}},
  };
  slides.nestedDownloadFiles = Strings{"REGEX:^inner[.]"};
  const AppBlueprints good = slides;
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.type) + ": " + c.reason);
    slides = good;
    slides.downloadFileType = c.type;
    mac.files.remove(paths::downloads);
    c.arrange();
    EXPECT_EQ(run(false), InstallOutcome::failed);
    EXPECT_THAT(fmt::format("{}", fmt::join(messages(), "|")), EndsWith(c.lines + "|Allowing idle sleep..."));
    EXPECT_EQ(vorlu.progress.cancelText, std::string("The Slides install was cancelled because ") + c.reason);
    EXPECT_THAT(*mac.files.list(paths::downloads), ElementsAreArray(c.left));
    EXPECT_FALSE(mac.exists(paths::output + "/inner.dmg"));
    EXPECT_FALSE(mac.exists(image)) << "still attached";
    EXPECT_THAT(mac.power.held, IsEmpty());
  }
}

TEST_F(DownloadTypes, ConvertedImageIsMountedThreeTimesAtMost) {
  slides.downloadFileType = "dmgWithEULA";
  mac.processes.onPrefix("/usr/bin/hdiutil attach -n", {.output = "hdiutil: attach failed - busy\n", .status = 1});
  EXPECT_EQ(run(false), InstallOutcome::failed);
  using std::chrono::seconds;
  EXPECT_THAT(mac.clock.sleeps(), ElementsAre(seconds(2), seconds(10), seconds(10)));
  const Lines lines = messages();
  EXPECT_THAT(
      lastOf(lines, 5),
      ElementsAre("Please ensure disk image mounting is not restricted and try again", "Extracting Slides-v2.0.dmg...",
                  "Error: Could not mount disk image for Slides. The update could not be processed",
                  "Removing downloads...", "Allowing idle sleep..."));
  EXPECT_EQ(installedVersion("Slides"), "1.0");
}

TEST_F(DownloadTypes, NestedPackagesFollowTheProcessorAndTheHashIsCheckedOnce) {
  slides.downloadFileType = "pkgInDMGWithEULA";
  slides.architectureNesting = true;
  slides.nestedDownloadFiles = Strings{"never"};
  slides.nestedSiliconDownloadFiles = Strings{"inner.pkg", "REGEX:^inner"};
  slides.nestedIntelDownloadFiles = Strings{};
  slides.preInstallScript = "before";
  slides.installerChoices = "<choices/>";
  const std::string choices = paths::output + "/SlidesChoices.xml";
  mac.processes.on("zsh: before", {});
  mac.processes.onPrefix("/usr/sbin/installer", {.output = "", .effect = [&](const Command& command) {
                                                   EXPECT_EQ(command.arguments[2], choices);
                                                   EXPECT_EQ(mac.read(choices), "<choices/>");
                                                   EXPECT_THAT(leftovers(),
                                                               ::testing::Not(::testing::Contains("Slides-v2.0.dmg")));
                                                   placeVersion("2.0");
                                                 }});
  EXPECT_EQ(run(false), InstallOutcome::installed);
  EXPECT_THAT(deeds(),
              ElementsAre("convert d/Slides-v2.0.dmg", "attach d/Slides-v2.0.cdr", "zsh: before",
                          "choose from " + image + "/inner.pkg", "choose from " + image + "/inner.pkg", "detach"));
  const Lines lines = messages();
  EXPECT_EQ(
      std::count(lines.begin(), lines.end(), "The installer hash matches the expected sha256 hash. Continuing..."), 1);

  mac.device.cpu = 7;
  placeVersion("1.0");
  EXPECT_EQ(run(false), InstallOutcome::failed) << "an empty list installs nothing";
  EXPECT_THAT(messages(), ::testing::Contains("Slides was successfully updated from version 1.0 to 2.0").Times(0));
}

TEST_F(DownloadTypes, InteractiveFailureEndsTheRunBehindItsWindow) {
  slides.universalInstallerHash = "0";
  EXPECT_THROW(run(true), RunEnded);
  const std::string window = mac.read(paths::dialogCommandFile);
  EXPECT_THAT(window, ::testing::StartsWith("progress: 1\nprogresstext: Downloading Slides...\nprogress: 2\n"
                                            "progress: 3\nprogress: 4\n"));
  EXPECT_EQ(window.substr(window.find("progress: 2\nprogresstext")),
            "progress: 2\nprogresstext: Installing Slides...\nprogress: 25\nprogress: 26\nprogress: 27\nprogress: "
            "28\nprogresstext: Install cancelled ❌\nprogress: complete\nquit:\n");
  EXPECT_EQ(vorlu.progress.cancelText,
            "The Slides install was cancelled because the installer file could not be verified");
  EXPECT_EQ(messages().back(), "Exiting...");
  EXPECT_THAT(mac.power.held, IsEmpty());
  EXPECT_THAT(leftovers(), IsEmpty());
}

}  // namespace
}  // namespace vorlu::test
