#include "vorlu/install/install_command.h"

#include <fmt/format.h>

#include "tests/unit/install/install_run.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class InstallCommand : public InstallRun {
 protected:
  InstallCommand() {
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"});
    mac.processes.on("/usr/bin/pgrep -x Dialog", {.output = "4711\n"});
    mac.processes.onPrefix("zsh: ", {.output = "0\n", .effect = [this](const Command& c) { note(commandLine(c)); }});
    RunDataFile file;
    file.CurrentRunType = "N/A";
    file.LastServerReset = static_cast<std::int64_t>(mac.clock.now());
    file.ServerCallCount = 10;  // no look-up on a server that this Mac lacks
    store(file);
    addToCatalog("Slides").preInstallScript = "note";
    vorlu.catalog.entries[0].legacyServerName = "old slides";
  }

  /// Keeps the state that another agent would see, at each shell line: run type, and the window in the receipt.
  void note(const std::string& line) {
    if (line.find("--title") != std::string::npos) prompts.push_back(between(line, "--title \"", "\""));
    const auto receipt = decodePropertyList<WatchReceiptData>(mac.read(paths::watchReceipt));
    seen.push_back(*runData().CurrentRunType + (receipt ? " " + receipt->userPromptPID->front() : ""));
    const std::string result = between(line, "> \"", "\"");
    if (line.find("completeResult") != std::string::npos) mac.write(result, "0\n");
  }
  static std::string between(const std::string& text, const std::string& head, const std::string& tail) {
    const std::size_t start = text.find(head) + head.size();
    return text.substr(start, text.find(tail, start) - start);
  }

  int install(const std::string& identifier, bool showProgress) {
    prompts.clear();
    seen.clear();
    messages();
    return endOf([&] { installApp(vorlu, identifier, showProgress); }).value_or(-1);
  }
  void expectCleanEnd(const std::string& what) {
    EXPECT_EQ(runData().CurrentRunType, "N/A") << what;
    EXPECT_FALSE(mac.exists(paths::watchReceipt)) << what;
    EXPECT_EQ(runData().LastCompliant, std::nullopt) << what;
    EXPECT_THAT(leftovers(), IsEmpty()) << what;
  }

  Lines prompts, seen;
};

TEST_F(InstallCommand, InstallsQuietly) {
  EXPECT_EQ(install("id.Slides", false), 0);
  EXPECT_EQ(installedVersion("Slides"), "2.0");
  const Lines lines = messages();
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + 3),
            (Lines{"Slides found in the Vorlu App catalog.", "Initialising the Slides installation",
                   "Initialising Slides install..."}));
  EXPECT_EQ(lastOf(lines, 6),
            (Lines{"Running post install tasks...", "Slides found at path: /Applications/Slides.app",
                   "The Slides install was successful.",
                   "Checking for version mismatches for Slides installed at path: /Applications/Slides.app",
                   "No version mismatch found", "Exiting..."}));
  EXPECT_THAT(prompts, IsEmpty());
  EXPECT_THAT(seen, ElementsAre("appInstallRun:server.Slides"));
  EXPECT_FALSE(mac.exists(paths::dialogCommandFile));
  expectCleanEnd("-i");
}

TEST_F(InstallCommand, ShowsItsWindowAndOffersToLaunch) {
  EXPECT_EQ(install("old slides", true), 0);
  EXPECT_THAT(prompts, ElementsAre("Installing Slides", "Install Complete!"));
  EXPECT_EQ(seen.front(), "appInstallProgInit:server.Slides") << "the window opens";
  EXPECT_THAT(seen, Contains("appInstallProgRun:server.Slides 4711")) << "the script of the install";
  Lines told;
  int bar = -1, steps = 0;
  std::istringstream commands(mac.read(paths::dialogCommandFile));
  for (std::string line; std::getline(commands, line);) {
    if (line.starts_with("progress: ") && line != "progress: complete") {
      EXPECT_GE(std::stoi(line.substr(10)), bar) << "the bar went back";
      bar = std::stoi(line.substr(10));
    } else {
      told.push_back(line);
    }
  }
  for (const std::string& line : tools())
    if (line.find("--progress ") != std::string::npos) steps = std::stoi(between(line, "--progress ", " "));
  EXPECT_EQ(bar, steps) << "full at the end";
  EXPECT_THAT(told, ElementsAre("progresstext: Preparing Install...", "progresstext: Downloading Slides...",
                                "progresstext: Installing Slides...", "progresstext: Slides Install Complete ✅",
                                "progress: complete", "quit:"));
  expectCleanEnd("-ip");
}

TEST_F(InstallCommand, RefusesWithItsLineAndItsPrompt) {
  const std::string unknown(10000, 'x');
  addToCatalog("Excluded");
  addToCatalog("Both");
  addToCatalog("Present");
  mac.addApplication(pathOf("Present"), "com.example.Present", "1.0");
  addToCatalog("Fixed").installsAllowed = false;
  addToCatalog("Tool").appType = "tool";
  vorlu.catalog.entries.back().appPath = "/usr/local/bin/nothing";
  vorlu.catalog.entries.back().alternatePaths = Strings{"/usr/local/bin/tool"};
  mac.write("/usr/local/bin/tool", "tool");
  setPreferences("GeneralOptions",
                 "<key>allowedAppInstalls</key><array><string>id.Both</string><string>id.Present</string>"
                 "<string>server.Fixed</string><string>id.Tool</string></array>"
                 "<key>excludedAppInstalls</key><array><string>server.Both</string></array>");
  const std::string cancelled = "Install Cancelled";
  struct Case {
    std::string identifier, line;
    bool jamfLine;
  };
  const Case cases[] = {
      {"", "Error: Specified App \"\" was not found in the Vorlu App catalog.", false},
      {"../x", "Error: Specified App \"../x\" was not found in the Vorlu App catalog.", false},
      {unknown, fmt::format("Error: Specified App \"{}\" was not found in the Vorlu App catalog.", unknown), false},
      {"id.Both",
       "Error: Both was included in the allowed Apps list but was also found in the excluded Apps list. Please contact "
       "your administrator and ask for Both to be removed from the excluded install list.",
       true},
      {"Excluded",
       "Error: Excluded was not included in the list of Apps allowed for installation. Please contact your "
       "administrator and ask for Excluded to be added to the allowed install list",
       true},
      {"Present", "Present is already installed at path: /Applications/Present.app", false},
      {"Tool", "Tool is already installed at path: /usr/local/bin/tool", false},
      {"Fixed", "Error: Fixed is not installable via Vorlu", false}};
  for (const bool showProgress : {false, true}) {
    for (const Case& c : cases) {
      const std::size_t jamf = mac.read(paths::jamfLog).size();
      EXPECT_EQ(install(c.identifier, showProgress), 1) << c.identifier;
      EXPECT_THAT(messages(), Contains(testing::StartsWith(c.line))) << c.identifier;
      EXPECT_EQ(mac.read(paths::jamfLog).size() > jamf, c.jamfLine || (!showProgress && c.identifier == "Fixed"));
      EXPECT_EQ(prompts.empty() ? "" : prompts.back(), showProgress ? cancelled : "") << c.identifier;
      expectCleanEnd(c.identifier);
    }
  }
  EXPECT_EQ(runData().ServerCallCount, 10);
}

TEST_F(InstallCommand, TellsWhyAnInstallCameToNothing) {
  vorlu.catalog.entries[0].universalInstallerHash = "wrong";
  EXPECT_EQ(install("Slides", false), 1);
  EXPECT_THAT(lastOf(messages(), 3),
              ElementsAre("Error: Slides was not found after the install attempt at path: /Applications/Slides.app",
                          "The Slides install was not successful", "Exiting..."));
  expectCleanEnd("-i");
  EXPECT_EQ(install("Slides", true), 1);
  EXPECT_THAT(prompts, ElementsAre("Installing Slides", "Install Cancelled")) << "by the pipeline";
  expectCleanEnd("-ip");

  AppBlueprints& elsewhere = addToCatalog("Draw");
  elsewhere.destinationPath = "/Users/alice";
  EXPECT_EQ(install("Draw", true), 1);
  EXPECT_THAT(prompts, ElementsAre("Installing Draw", "Error: Install Failed"));
  expectCleanEnd("-ip, in another place");
}

TEST_F(InstallCommand, OnlyAnEmptiedListOfUpdatesIsCompliance) {
  install("Slides", false);
  mac.files.move("/Applications/Slides.app", "/Users/alice/Slides.app");
  vorlu.catalog.entries[0].alternatePaths = Strings{"/Users/alice/Slides.app"};
  for (const bool another : {true, false}) {
    vorlu.updates.pendingUpdates.assign(1, {.appName = "Slides", .installedPath = "/Users/alice/Slides.app"});
    if (another) vorlu.updates.pendingUpdates.push_back({.appName = "Draw"});
    mac.files.remove("/Applications/Slides.app");
    EXPECT_EQ(install("Slides", false), 0);
    EXPECT_EQ(runData().LastCompliant.has_value(), !another);
  }
}

}  // namespace
}  // namespace vorlu::test
