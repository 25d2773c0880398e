#include "vorlu/detection/update_check.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

/// A bundle's entry; `more` are further members.
std::string bundle(const std::string& name, const std::string& latest, const std::string& more = "") {
  return fmt::format(
      R"({{"appName":"{0}","appIdentifier":"com.example.{0}","latestVersion":"{1}","dateReleased":"May",)"
      R"("latestVersionMethod":"CFBundleShortVersionString","appPath":"/Applications/{0}.app"{2}{3}}})",
      name, latest, more.empty() ? "" : ",", more);
}

Lines textsOf(const std::vector<ApplicationInventory>& apps) {
  Lines lines;
  for (const ApplicationInventory& app : apps)
    lines.push_back(fmt::format("{} {} {} {}->{} {}{}{}{}", app.appName, app.appIdentifier, app.installedPath,
                                app.installedVersion, app.latestVersion, app.latestVersionReleased,
                                app.updateRequired ? " required" : "", app.updateCached ? " cached" : "",
                                app.updatesAllowed ? " allowed" : ""));
  return lines;
}

/// A Mac with three bundles installed.
struct UpdateCheckTest : testing::Test, AgentRun {
  UpdateCheckTest() {
    store({});
    mac.addApplication("/Applications/Current.app", "org.current", "2.0");
    mac.addApplication("/Applications/Old.app", "org.old", "1.9");
    mac.addApplication("/Applications/Older.app", "org.older", "1");
  }

  void exclude(const std::string& text) {
    setPreferences("GeneralOptions", "<key>excludedAppUpdates</key><array><string>" + text + "</string></array>");
  }
  Lines storedInventory() {
    auto stored = decodeJson<AppInventory>(mac.read(paths::appInventory));
    return stored && stored->appInventory ? textsOf(*stored->appInventory) : Lines{"no inventory"};
  }
  std::string lastCompliant() { return runData().LastCompliant.value_or("never"); }
};

TEST_F(UpdateCheckTest, FullCheckFindsWhatIsDue) {
  setCatalog("[" + bundle("NoVersion", "") + "," + bundle("Off", "2", R"("updatesAllowed":false)") + "," +
             bundle("Excluded", "2", R"("appPath":"/Applications/Old.app")") + "," + bundle("Current", "2.0") + "," +
             bundle("Old", "1.10", R"("updatesAllowed":true)") + "," +
             bundle("NoSilicon", "2", R"("architecture":"arch","appleSiliconDownloadURL":"")") + "," +
             bundle("Absent", "3") + "," +
             R"({"appName":"Out Of Scope","appIdentifier":"scope","latestVersion":"zoo","appPath":"/Applications",
                 "latestVersionMethod":"shellCommand","latestVersionScript":"print Skip"},
                {"appName":"Tool","appIdentifier":"tool","latestVersion":"2","latestIntelVersion":"3",
                 "latestSiliconVersion":"4","appPath":"/Applications","latestVersionMethod":"pkgReceipt",
                 "installReceipts":["org.tool","org.other"]},
                {"appName":"No Method","appIdentifier":"none","latestVersion":"1.0","appPath":"/Applications"}])");
  exclude("Excluded");
  mac.processes.on("zsh: print Skip", {"SkiP\n"});
  mac.write("/var/db/receipts/org.tool.plist",
            "<plist><dict><key>PackageVersion</key><string>3.9</string></dict></plist>");
  for (const char* name : {"Off-v1.pkg", "Excluded-v2.pkg", "Current-v2.0.dmg", "Old-v1.10.dmg", "Old-v1.9.dmg",
                           "Tool-v4.pkg", "Tool-v2.pkg"}) {
    cacheFile(name);
  }
  vorlu.updates.pendingUpdates.resize(1);
  vorlu.updates.skippedUpdates.resize(1);

  checkForUpdates(vorlu, "", false);

  const auto removed = [](const std::string& item) {
    return "Removing cached update file " + item + " as the update is no longer required";
  };
  EXPECT_EQ(messages(),
            (Lines{"Error: No latest version found for NoVersion. Unable to check for updates for this App",
                   "Skipping update check for Off because updates are not available for this App via Vorlu",
                   "NoSilicon is not universal and not supported on Apple Silicon Macs. Skipping update check...",
                   "Updating installed App inventory...", removed("Excluded-v2.pkg"), removed("Old-v1.9.dmg"),
                   removed("Tool-v2.pkg"), "Updates required: Old v1.10, Tool v4, No Method v1.0."}));
  const std::string old = "Old com.example.Old /Applications/Old.app 1.9->1.10 May required cached allowed";
  const std::string tool = "Tool tool /Applications 3.9->4 Unknown required cached allowed";
  const std::string noMethod = "No Method none /Applications ->1.0 Unknown required allowed";
  EXPECT_EQ(textsOf(vorlu.updates.pendingUpdates), (Lines{old, tool, noMethod}));
  const Lines inventory = {"Current com.example.Current /Applications/Current.app 2.0->2.0 May cached allowed", old,
                           tool, noMethod};
  EXPECT_EQ(textsOf(vorlu.updates.appInventoryList), inventory);
  EXPECT_EQ(storedInventory(), inventory);
  EXPECT_EQ(mac.files.info(paths::appInventory)->mode, 0644U);
  EXPECT_EQ(cachedFiles(), (Lines{"Old-v1.10.dmg", "Tool-v4.pkg"}));
  EXPECT_EQ(vorlu.updates.pendingFrom, Walk::full);
  EXPECT_TRUE(vorlu.updates.skippedUpdates.empty());
  EXPECT_EQ(lastCompliant(), "never");
}

TEST_F(UpdateCheckTest, SummaryTellsWhatIsRequired) {
  const auto expectSummary = [this](const std::string& entries, const char* summary, const char* compliant) {
    setCatalog("[" + entries + "]");
    checkForUpdates(vorlu, "", false);
    EXPECT_EQ(messages(), (Lines{"Updating installed App inventory...", summary}));
    EXPECT_EQ(lastCompliant(), compliant);
  };
  expectSummary(bundle("Old", "2"), "Update required: Old v2.", "never");
  expectSummary(bundle("Old", "1.8") + "," + bundle("Current", "2.0"), "No updates are required",
                "Mar 02 2026 12:00:00 +0000");
}

TEST_F(UpdateCheckTest, RefreshLooksAtEveryAppAndLeavesTheRestAlone) {
  setCatalog("[" + bundle("Old", "2") + "," + bundle("Current", "2.0") + "]");
  exclude("Old");
  cacheFile("Stranger-v1.dmg");
  vorlu.updates.skippedUpdates.resize(1);
  checkForUpdates(vorlu, "", true);
  EXPECT_EQ(messages(), Lines{"Updating installed App inventory..."});
  EXPECT_EQ(storedInventory(), (Lines{"Old com.example.Old /Applications/Old.app 1.9->2 May required",
                                      "Current com.example.Current /Applications/Current.app 2.0->2.0 May allowed"}));
  EXPECT_EQ(cachedFiles(), Lines{"Stranger-v1.dmg"});
  EXPECT_EQ(vorlu.updates.pendingFrom, Walk::refresh);
  EXPECT_EQ(vorlu.updates.skippedUpdates.size(), 1U);
  EXPECT_EQ(lastCompliant(), "never");
}

TEST_F(UpdateCheckTest, OneAppIsCheckedWhetherAllowedOrNot) {
  exclude("Old");
  bool found = false;
  const auto check = [&](const char* what, const std::string& name, const std::string& entries, bool expected,
                         const Lines& lines) {
    setCatalog("[" + entries + "]");
    vorlu.updates.singleAppUpdateFound = found;
    checkForUpdates(vorlu, name, false);
    EXPECT_EQ(messages(), lines) << what;
    EXPECT_EQ(vorlu.updates.singleAppUpdateFound, expected) << what;
    EXPECT_EQ(vorlu.updates.pendingFrom, Walk::single) << what;
    EXPECT_EQ(storedInventory(), Lines{"no inventory"}) << what;
  };
  const std::string checkingOld = "Checking for Old updates...";
  check("due", "Old", bundle("Old", "2") + "," + bundle("Older", "2"), true,
        {checkingOld, "Update found for Old. Need to install v2"});
  check("versions by processor alone", "Old",
        bundle("Old", "", R"("latestIntelVersion":"3","latestSiliconVersion":"4")"), true,
        {checkingOld, "Update found for Old. Need to install v4"});
  found = true;
  check("not due", "Current", bundle("Current", "2.0"), false,
        {"Checking for Current updates...", "No updates found for Current"});
  check("not installed", "Absent", bundle("Absent", "9"), false,
        {"Checking for Absent updates...", "No updates found for Absent"});
}

TEST_F(UpdateCheckTest, AppsWithoutABuildForTheProcessorAreLeftOut) {
  const auto firstMessage = [this](const std::string& more, std::optional<int> cpu) {
    mac.device.cpu = cpu;
    setCatalog("[" + bundle("Old", "2", R"("architecture":)" + more) + "]");
    checkForUpdates(vorlu, "", true);
    return messages().front() + (vorlu.updates.pendingUpdates.empty() ? "" : " due");
  };
  const std::string due = "Updating installed App inventory... due";
  EXPECT_EQ(firstMessage(R"("arch","intelDownloadURL":"")", 7),
            "Old is not universal and not supported on Intel Macs. Skipping update check...");
  EXPECT_EQ(firstMessage(R"("arch","intelDownloadURL":"")", 12), due);
  EXPECT_EQ(firstMessage(R"("Arch","intelDownloadURL":"")", 7), due);
  EXPECT_EQ(firstMessage(R"("arch","intelDownloadURL":"","appleSiliconDownloadURL":"")", {}), due);
}

TEST_F(UpdateCheckTest, VersionsByProcessorCountOnlyTogether) {
  const auto pendingVersion = [this](const std::string& latest, const std::string& more, int cpu) {
    mac.device.cpu = cpu;
    setCatalog("[" + bundle("Old", latest, more) + "]");
    checkForUpdates(vorlu, "Old", false);
    const auto& pending = vorlu.updates.pendingUpdates;
    return pending.empty() ? "" : pending.front().latestVersion;
  };
  const std::string pair = R"("latestIntelVersion":"5","latestSiliconVersion":"6")";
  EXPECT_EQ(pendingVersion("4", pair, 7), "5");
  EXPECT_EQ(pendingVersion("4", pair, 12), "6");
  EXPECT_EQ(pendingVersion("", pair, 18), "");
  EXPECT_EQ(pendingVersion("4", R"("latestIntelVersion":"5","latestSiliconVersion":"")", 7), "4");
  EXPECT_EQ(pendingVersion("", R"("latestIntelVersion":"5")", 7), "");
}

TEST_F(UpdateCheckTest, InventoryIsReplacedWholeOrNotAtAll) {
  setCatalog("[" + bundle("Current", "2.0") + "]");
  mac.write(paths::appInventory, "old");
  mac.files.failWrite(2);  // the first write is the log's
  checkForUpdates(vorlu, "", true);
  EXPECT_EQ(mac.read(paths::appInventory), "old");
  EXPECT_THAT(messages(), testing::ElementsAre("Updating installed App inventory...",
                                               testing::StartsWith("Error writing to App Inventory JSON file: ")));

  mac.files.heal();
  ASSERT_TRUE(mac.files.remove(paths::appInventory));
  mac.makeFolder(paths::appInventory + "/in the way");
  checkForUpdates(vorlu, "", true);
  EXPECT_EQ(storedInventory().size(), 1U);
  EXPECT_EQ(messages(), Lines{"Updating installed App inventory..."});
}

}  // namespace
}  // namespace vorlu::test
