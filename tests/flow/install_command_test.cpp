#include "vorlu/install/install_command.h"

#include <fmt/format.h>

#include "tests/unit/install/install_run.h"
#include "vorlu/state/receipts.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::StartsWith;

std::string between(const std::string& text, const std::string& head, const std::string& tail) {
  const std::size_t start = text.find(head);
  if (start == std::string::npos) return "";
  return text.substr(start + head.size(), text.find(tail, start + head.size()) - start - head.size());
}

class InstallCommand : public InstallRun {
 protected:
  InstallCommand() {
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"});
    mac.processes.on("/usr/bin/pgrep -x Dialog", {.output = "4711\n"});
    mac.processes.onPrefix("zsh: ", {.output = "0\n", .effect = [this](const Command& c) { note(commandLine(c)); }});
    RunDataFile file;
    file.LastServerReset = static_cast<std::int64_t>(mac.clock.now());
    file.ServerCallCount = 10;  // no look-up on a server that this Mac lacks
    store(file);
    mac.makeFolder(paths::components);
    addToCatalog("Slides").preInstallScript = "note";
    vorlu.catalog.entries[0].legacyServerName = "old slides";
  }

  /// At each shell line: prompts by their titles, and what another agent would see.
  void note(const std::string& line) {
    if (const std::string title = between(line, "--title \"", "\""); !title.empty()) prompts.push_back(title);
    if (const std::string bar = between(line, "--progress ", " "); !bar.empty()) steps = bar;
    const auto receipt = decodePropertyList<WatchReceiptData>(mac.read(paths::watchReceipt));
    seen.push_back(*runData().CurrentRunType + (receipt ? " " + receipt->userPromptPID->front() : ""));
  }
  int install(const std::string& identifier, bool showProgress) {
    prompts = seen = {};
    messages();
    const auto end = endOf([&] { installApp(vorlu, identifier, showProgress); });
    EXPECT_EQ(runData().CurrentRunType, "N/A") << identifier;
    EXPECT_EQ(runData().ServerCallCount, 10);
    EXPECT_FALSE(mac.exists(paths::watchReceipt)) << identifier;
    EXPECT_EQ(leftovers(), Strings()) << identifier;
    return end.value_or(-1);
  }

  Lines prompts, seen;
  std::string steps;  ///< of the window's bar
};

TEST_F(InstallCommand, InstallsQuietly) {
  EXPECT_EQ(install("id.Slides", false), 0);
  EXPECT_EQ(installedVersion("Slides"), "2.0");
  EXPECT_THAT(lastOf(messages(), 2), ElementsAre("No version mismatch found", "Exiting..."));
  EXPECT_EQ(prompts, Lines());
  EXPECT_THAT(seen, ElementsAre("appInstallRun:server.Slides"));
  EXPECT_FALSE(mac.exists(paths::dialogCommandFile));
  EXPECT_EQ(runData().LastCompliant, std::nullopt);
}

TEST_F(InstallCommand, ShowsItsWindowAndOffersToLaunch) {
  EXPECT_EQ(install("old slides", true), 0);
  EXPECT_THAT(prompts, ElementsAre("Installing Slides", "Install Complete!"));
  EXPECT_EQ(seen.front(), "appInstallProgInit:server.Slides") << "the window opens";
  EXPECT_THAT(seen, Contains("appInstallProgRun:server.Slides 4711")) << "the script of the install";
  Lines told;
  std::string bar;
  std::istringstream commands(mac.read(paths::dialogCommandFile));
  for (std::string line; std::getline(commands, line);) {
    const std::string value = between(line, "progress: ", "\n");
    if (value.empty() || value == "complete")
      told.push_back(line);
    else
      bar = value;
  }
  EXPECT_EQ(bar, steps) << "full at the end";
  EXPECT_THAT(told, ElementsAre("progresstext: Preparing Install...", "progresstext: Downloading Slides...",
                                "progresstext: Installing Slides...", "progresstext: Slides Install Complete ✅",
                                "progress: complete", "quit:"));
}

TEST_F(InstallCommand, RefusesWithItsLineAndItsPrompt) {
  for (const char* name : {"Barred", "Both", "Present", "Fixed", "Tool"}) addToCatalog(name);
  mac.addApplication(pathOf("Present"), "com.example.Present", "1.0");
  vorlu.catalog.entries[4].installsAllowed = false;
  vorlu.catalog.entries[5].appType = "tool";
  vorlu.catalog.entries[5].appPath = "/nowhere";
  vorlu.catalog.entries[5].alternatePaths = Strings{"/Users/alice"};
  setPreferences("GeneralOptions",
                 "<key>allowedAppInstalls</key><array><string>id.Both</string><string>id.Present</string>"
                 "<string>id.Tool</string><string>server.Fixed</string></array>"
                 "<key>excludedAppInstalls</key><array><string>server.Both</string></array>");
  const std::string unknown(10000, 'x');
  for (const auto& [identifier, line] : std::vector<std::pair<std::string, std::string>>{
           {"", "Error: Specified App \"\" was not found in the Vorlu App catalog."},
           {"../x", "Error: Specified App \"../x\" was not found in the Vorlu App catalog."},
           {unknown, "Error: Specified App \"" + unknown + "\" was not found in the Vorlu App catalog."},
           {"Both", "Error: Both was included in the allowed Apps list but was also found in the excluded Apps list."},
           {"Barred", "Error: Barred was not included in the list of Apps allowed for installation."},
           {"Present", "Present is already installed at path: /Applications/Present.app"},
           {"Tool", "Tool is already installed at path: /Users/alice"},
           {"Fixed", "Error: Fixed is not installable via Vorlu"}}) {
    EXPECT_EQ(install(identifier, false), 1) << identifier;
    EXPECT_THAT(messages(), Contains(StartsWith(line)));
    EXPECT_EQ(prompts, Lines()) << identifier;
    EXPECT_EQ(install(identifier, true), 1) << identifier;
    EXPECT_THAT(messages(), Contains(StartsWith(line)));
    EXPECT_EQ(lastOf(prompts, 1), Lines{"Install Cancelled"}) << identifier;
  }
}

TEST_F(InstallCommand, TellsWhyAnInstallCameToNothing) {
  vorlu.catalog.entries[0].universalInstallerHash = "wrong";
  EXPECT_EQ(install("Slides", false), 1);
  EXPECT_THAT(lastOf(messages(), 3),
              ElementsAre("Error: Slides was not found after the install attempt at path: /Applications/Slides.app",
                          "The Slides install was not successful", "Exiting..."));
  addToCatalog("Draw").destinationPath = "/Users/alice";
  EXPECT_EQ(install("Draw", true), 1);
  EXPECT_THAT(prompts, ElementsAre("Installing Draw", "Error: Install Failed"));
}

}  // namespace
}  // namespace vorlu::test
