#include "vorlu/policy/forced_update_flow.h"

#include <fmt/format.h>

#include "tests/unit/install/install_run.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/state/forced_receipt.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

const std::string dialog = "zsh: \"" + paths::dialogProgram;

class ForcedUpdateFlow : public InstallRun {
 protected:
  ForcedUpdateFlow() {
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"});
    mac.processes.onPrefix("/usr/bin/pgrep -x ", {.output = ""});
    mac.processes.onPrefix("zsh: ", {});
    mac.processes.onPrefix("zsh: launchctl asuser",
                           {.effect = [this](const Command&) { mac.applications.running = {}; }});
    RunDataFile file;
    file.CurrentRunType = "N/A";
    file.DeferCount = "2";
    store(file);
  }

  /// A marked app in version 1.0, of which 2.0 is served.
  void mark(const std::string& name, const std::string& keys, bool inUse) {
    addToCatalog(name);
    install(name);
    if (inUse) mac.applications.running.insert("com.example." + name);
    mac.write(forcedReceiptPath("id." + name), plistOf(keys));
  }

  /// One run in which the user's answers come prompt by prompt; the last is given for ever.
  void flow(const Strings& given) {
    for (const std::string& answer : given) {
      const auto look = [this](const Command&) { EXPECT_EQ(runData().CurrentRunType, "forcedUpdate"); };
      mac.processes.onPrefix(dialog, {.output = answer + "\n", .effect = look});
    }
    EXPECT_EQ(endOf([&] { forcedUpdateFlow(vorlu); }), std::nullopt);
    for (const std::string& line : tools()) noteCommand(line);
    EXPECT_EQ(runData().CurrentRunType, "N/A");
    EXPECT_EQ(runData().DeferCount, "2") << "the computer's own deferrals";
    EXPECT_EQ(vorlu.modes.runExitStatus, 0);
    EXPECT_FALSE(mac.exists(paths::currentTask) || mac.exists(paths::watchReceipt));
  }
  void noteCommand(const std::string& line) {
    const auto has = [&](const char* text) { return line.find(text) != std::string::npos; };
    if (has("--progress ")) shown.emplace_back("window");
    if (has("open -g -a ")) shown.emplace_back("relaunch");
    if (!line.starts_with(dialog)) return;
    shown.emplace_back(has("--button2text")     ? "initial"
                       : has("completeResult")  ? "complete"
                       : has("Error Updating ") ? "failure"
                                                : "grace");
  }

  Lines shown;  ///< what the user has seen, in order
};

// name: app, deferrals of its receipt ("#" for an integer), the user's answers, what is shown, the app's version at the
// end, the deferrals left in the receipt ("*" when it changed) or nothing when it is gone, and a part of the log
const char* const outcomes = R"(
silent:         closed,  3,  ,    , 2.0, , The Slides forced update was successful
agreed:         in use,  2,  4 0, initial initial window relaunch complete, 2.0, , for the Slides update: 2
deferred:       in use,  2,  2,   initial, 1.0, 1*, The user deferred the Slides forced update. The new defer count is 1
died:           in use,  1,  137, initial, 1.0, 0*, The initial prompt exited unexpectedly. The defer count is now 0
noneLeft:       in use,  0,  4,   grace window relaunch complete, 2.0, , The user has no remaining deferrals for the
noneAllowed:    in use,  N/A, 9,  grace window relaunch complete, 2.0, , No deferrals will be allowed for the Slides
wrongType:      in use,  #3, 0,   grace window relaunch complete, 2.0, , No deferrals will be allowed for the Slides
quietAtTheEnd:  in use,  1,  0,   initial window, 2.0, , auto-relaunch is disabled for forced updates
failed:         in use,  1,  0,   initial window relaunch failure, 1.0, 1*, The Slides update failed. Informing user
failedSilently: closed,  1,  ,    , 1.0, 1*, Error: Could not install the Slides forced update.
notElapsed:     in use,  1,  ,    , 1.0, 1,  Deferral end time: 2026-03-02 12:59:00 +0000
otherDay:       in use,  1,  ,    , 1.0, 1,  A run day limitation was set for today (Monday)
foreground:     in use,  1,  ,    , 1.0, 1,  Forced Slides update skipped due to the following configured DND App(s) being
assertion:      in use,  1,  ,    , 1.0, 1,  Found configured DND Application assertions: zoom
camera:         in use,  1,  ,    , 1.0, 1,  Forced Slides update skipped due to the camera being in use
doNotDisturb:   in use,  1,  ,    , 1.0, 1,  DND mode is active. Skipping update prompt
screenSharing:  in use,  1,  ,    , 1.0, 1,  Forced Slides update skipped due to screen sharing being in use
nobody:         in use,  0,  ,    , 1.0, 0,  The user has no remaining deferrals
notAllowed:     closed,  1,  ,    , 2.0, ,   Removing Slides update receipt...
unknown:        closed,  1,  ,    , 1.0, ,   The specified app id.Slides could not be found. No action will be taken.
upToDate:       closed,  1,  ,    , 1.0, ,   No updates found for Slides
unreadOnce:     closed,  1,  ,    , 1.0, 1,  Slides needs its update after all. It is forced by the next run
)";

Strings split(const std::string& text, char separator) {
  Strings parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);)
    if (parts.emplace_back(trimmed(part)).empty() && separator != ',') parts.pop_back();
  return parts;
}

struct ForcedOutcomes : ForcedUpdateFlow, testing::WithParamInterface<std::string> {
  /// What is special about the Mac of a case.
  void arrange(const std::string& name) {
    const std::string zoom = "<array><string>zoom</string></array>", yes = "<true/>", no = "<false/>";
    const auto forced = [this](const std::string& key, const std::string& value) {
      setPreferences("ForcedUpdates", "<key>" + key + "</key>" + value);
    };
    AppBlueprints& app = vorlu.catalog.entries[0];
    if (name.starts_with("failed")) app.universalInstallerHash = "wrong";
    if (name == "quietAtTheEnd") forced("displayCompletePrompt", no + "<key>autoRelaunchApps</key>" + no);
    if (name == "otherDay") forced("runLimitations", "<dict><key>monday</key>" + no + "</dict>");
    if (name == "foreground") forced("acceptableAppBundleIDs", zoom), mac.applications.front = {"zoom"};
    if (name == "assertion")
      forced("acceptableAppAssertions", zoom), mac.power.assertions = {{7, {{"zoom", "NoSleep"}}}};
    if (name == "camera") forced("acceptableCameraUsage", yes), mac.cameras.cameras = {{35, true}};
    if (name == "screenSharing") forced("acceptableScreenSharing", yes), mac.focus.shared = true;
    if (name == "doNotDisturb") forced("acceptableDNDMode", yes);
    mac.write("/Users/alice/Library/Preferences/com.apple.controlcenter.plist",
              plistOf("<key>NSStatusItemVisibleFocusModes</key><true/>"));
    if (name == "nobody") mac.consoleUser.user = "loginwindow";
    if (name == "notAllowed") setPreferences("GeneralOptions", "<key>allowedAppUpdates</key>" + zoom);
    if (name == "unknown") app.appIdentifier = "other";
    if (name == "upToDate") app.latestVersion = "1.0";
    if (name != "unreadOnce") return;
    std::tie(app.latestVersionMethod, app.latestVersionScript) = std::tuple("shellCommand", "print version");
    mac.processes.on("zsh: print version", {.starts = false});
    mac.processes.on("zsh: print version", {"1.0\n"});
  }
};

TEST_P(ForcedOutcomes, OfOneReceipt) {
  const std::string name = GetParam().substr(0, GetParam().find(':'));
  const Strings row = split(GetParam().substr(name.size() + 1), ',');
  const std::string type = row[1][0] == '#' ? "integer" : "string";
  const std::string lastRun = name == "notElapsed" ? "<key>lastRun</key><integer>1772452740</integer>" : "";
  mark("Slides", fmt::format("<key>deferrals</key><{0}>{1}</{0}>{2}", type, row[1].substr(type == "integer"), lastRun),
       row[0] == "in use");
  arrange(name);
  const std::string path = forcedReceiptPath("id.Slides");
  const std::string before = mac.read(path);
  flow(split(row[2], ' '));
  EXPECT_EQ(shown, split(row[3], ' '));
  EXPECT_EQ(installedVersion("Slides"), row[4]);
  EXPECT_THAT(joined(messages(), {mac.read(paths::jamfLog)}), Contains(HasSubstr(row[6])));
  const bool changed = mac.read(path) != before;
  const std::string left = loadForcedReceipt(mac.files, path).deferrals + (changed ? "*" : "");
  EXPECT_EQ(mac.exists(path) ? left : "", row[5]);
}

INSTANTIATE_TEST_SUITE_P(All, ForcedOutcomes, testing::ValuesIn(split(outcomes, '\n')),
                         [](const auto& row) { return row.param.substr(0, row.param.find(':')); });

TEST_F(ForcedUpdateFlow, WaitsForTheNextRunBesideAnotherAgent) {
  mark("Slides", "<key>deferrals</key><string>1</string>", false);
  mac.write(paths::currentTask + "/id.Other", "");
  vorlu.modes.standing = Standing::beside;
  for (const bool marked : {true, false}) {
    if (!marked) mac.files.remove(paths::receipts);
    EXPECT_EQ(endOf([&] { forcedUpdateFlow(vorlu); }), std::nullopt);
    EXPECT_EQ(installedVersion("Slides"), "1.0");
    EXPECT_TRUE(mac.exists(paths::currentTask + "/id.Other")) << "the other one's";
    EXPECT_EQ(mac.exists(forcedReceiptPath("id.Slides")), marked);
  }
}

TEST_F(ForcedUpdateFlow, WhatHoldsOneReceiptBackHarmsNoOther) {
  mark("A", "<key>deferrals</key><string>1</string>", true);
  mark("B", "", false);
  mac.makeFolder(forcedReceiptPath("server.A"));  // a directory, and the second mark of one app
  for (const std::string name : {"0 Patch Receipt.plist", "broken"}) mac.write(paths::receipts + "/" + name, "\x01");
  flow({"2"});
  EXPECT_THAT(shown, ElementsAre("initial")) << "once, although A is marked twice";
  EXPECT_EQ(installedVersion("B"), "2.0");
  EXPECT_EQ(loadForcedReceipt(mac.files, forcedReceiptPath("id.A")).deferrals, "0");
  EXPECT_THAT(*mac.files.list(paths::receipts),
              ElementsAre("broken", "id.A Patch Receipt.plist", "server.A Patch Receipt.plist"));
  EXPECT_THAT(vorlu.updates.forcedApps, ElementsAre("A", "B"));
  const auto last = mac.clock.sleeps().back();
  EXPECT_TRUE(std::chrono::seconds(50) <= last && last < std::chrono::seconds(90)) << last.count();
}

}  // namespace
}  // namespace vorlu::test
