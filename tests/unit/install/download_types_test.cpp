#include <fmt/format.h>

#include <algorithm>
#include <regex>

#include "tests/unit/install/install_run.h"
#include "vorlu/install/download_type.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;
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
  slides.expectedCodeSignature = signedBy;
  for (const std::string type : {"pkg", "dmg", "dmgWithEULA", "pkgInDMG", "pkgInDMGWithEULA", "zip", "tbz", "zipInTBZ",
                                 "pkgInZIP", "dmgInZIP", "dmgWithEULAInZIP"}) {
    SCOPED_TRACE(type);
    slides.downloadFileType = type;
    slides.nestedDownloadFiles = type == "zipInTBZ" ? Strings{"inner.zip"} : Strings{"missing", "REGEX:^inner[.]"};
    slides.verifySignature = type.starts_with("pkg");
    for (const bool interactive : {true, false}) {
      placeVersion("1.0");
      EXPECT_EQ(run(interactive, true), InstallOutcome::installed);
      EXPECT_EQ(installedVersion("Slides"), "2.0");
      mac.files.remove(paths::downloads + "/Slides-v2.0.cdr");
      EXPECT_THAT(leftovers(), IsEmpty());
      EXPECT_FALSE(mac.exists(image));
      EXPECT_EQ(vorlu.progress.installProgress, progressSteps(type, interactive));
    }
  }
}

TEST_F(DownloadTypes, EachFailureHasItsReasonAndCleansUp) {
  slides.nestedDownloadFiles = Strings{"REGEX:^inner[.]"};
  const AppBlueprints good = slides;
  const auto expectFailure = [&](const char* type, const std::string& reason, const std::function<void()>& arrange,
                                 const Strings& left = {}) {
    SCOPED_TRACE(std::string(type) + ": " + reason);
    slides = good;
    slides.downloadFileType = type;
    mac.files.remove(paths::downloads);
    arrange();
    EXPECT_EQ(run(false), InstallOutcome::failed);
    EXPECT_EQ(vorlu.progress.cancelText, "The Slides install was cancelled because " + reason);
    EXPECT_EQ(cachedFiles(), left);
    EXPECT_FALSE(mac.exists(paths::output + "/inner.dmg"));
    EXPECT_FALSE(mac.exists(image)) << "still attached";
    EXPECT_THAT(mac.power.held, IsEmpty());
  };
  const auto signedByOther = [&] { slides.verifySignature = true, slides.expectedCodeSignature = "Other"; };
  const auto nest = [&](const Strings& items) { return [&, items] { slides.nestedDownloadFiles = items; }; };
  const std::string nestedMissing = "the nested installer file could not be found";

  expectFailure("pkg", "the developer could not be verified", signedByOther);
  const auto otherHash = [&] { slides.universalInstallerHash = "0"; };
  expectFailure("pkgInZIP", "the developer could not be verified", signedByOther);
  for (const char* package : {"pkg", "pkgInDMG"})
    expectFailure(package, "the installer file could not be verified", otherHash);
  expectFailure("pkgInZIP", nestedMissing, nest({"REGEX:inner", "missing.pkg"}));
  expectFailure("pkgInZIP", nestedMissing, nest({""}));
  expectFailure("dmgInZIP", nestedMissing, nest({"inner.dmg", "../x"}));
  expectFailure("dmg", "the required install files could not be found", [&] { slides.sourceItems = {{"Other.app"}}; });
  expectFailure("zipInTBZ", "the required install files could not be found", nest({"../Downloads/inner.zip"}));
  expectFailure("dmg", "the installer file could not be verified", otherHash);
  mac.processes.onPrefix("/usr/bin/hdiutil convert -q", {.output = "", .status = 1});
  for (const auto& [type, download] :
       {std::pair("dmgWithEULAInZIP", "Slides-v2.0.zip"), {"dmgWithEULA", "Slides-v2.0.dmg"}})
    expectFailure(
        type,
        "the disk image could not be converted. Please ensure no disk image restrictions are configured and try again",
        [] {}, {download});
  const auto blockChoices = [&] {
    slides.installerChoices = "<plist/>";
    mac.files.remove(paths::output);
    mac.write(paths::output, "a file in the folder's place");
  };
  expectFailure("pkg", "the required install files could not be written", blockChoices);
  EXPECT_THAT(messages(), ::testing::Contains("Error: Could not write the required choices XML for the Slides "
                                              "installer. Cancelling the update"));
}

TEST_F(DownloadTypes, ConvertedImageIsMountedThreeTimesAtMost) {
  slides.downloadFileType = "dmgWithEULA";
  mac.processes.onPrefix("/usr/bin/hdiutil attach -n", {.output = "hdiutil: attach failed - busy\n", .status = 1});
  EXPECT_EQ(run(false), InstallOutcome::failed);
  using std::chrono::seconds;
  EXPECT_THAT(mac.clock.sleeps(), ElementsAre(seconds(2), seconds(10), seconds(10)));
  EXPECT_EQ(vorlu.progress.cancelText,
            "The Slides install was cancelled because the disk image could not be mounted. Please ensure disk images "
            "are allowed and try again");
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
  mac.processes.onPrefix("zsh: \"" + paths::dialogProgram, {});
  EXPECT_THROW(run(true), RunEnded);
  const std::string window = mac.read(paths::dialogCommandFile);
  EXPECT_THAT(window, ::testing::StartsWith("progress: 1\nprogresstext: Downloading Slides...\nprogress: 2\n"
                                            "progress: 3\nprogress: 4\n"));
  EXPECT_EQ(window.substr(window.find("progress: 2\nprogresstext")),
            "progress: 2\nprogresstext: Installing Slides...\nprogress: 25\nprogress: 26\nprogress: 27\nprogress: "
            "28\nprogresstext: Install cancelled ❌\nprogress: complete\nquit:\n");
  EXPECT_THAT(tools().back(), ::testing::HasSubstr("--message \"The Slides install was cancelled because the installer "
                                                   "file could not be verified\" --button1text"));
  EXPECT_EQ(messages().back(), "Exiting...");
  EXPECT_THAT(mac.power.held, IsEmpty());
  EXPECT_THAT(leftovers(), IsEmpty());
}

}  // namespace
}  // namespace vorlu::test
