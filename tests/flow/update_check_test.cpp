#include "vorlu/detection/update_check.h"

#include "tests/unit/detection/detection_run.h"
#include "vorlu/state/property_list.h"

namespace vorlu::test {
namespace {

/// A bundle's entry; `more` are further members.
std::string bundle(const std::string& name, const std::string& latest, const std::string& more = "") {
  return fmt::format(
      R"({{"appName":"{0}","appIdentifier":"com.example.{0}","latestVersion":"{1}","dateReleased":"May",)"
      R"("latestVersionMethod":"CFBundleShortVersionString","appPath":"/Applications/{0}.app"{2}{3}}})",
      name, latest, more.empty() ? "" : ",", more);
}

std::string shown(const ApplicationInventory& app) {
  return fmt::format("{} {} {} {}->{} {}{}{}{}", app.appName, app.appIdentifier, app.installedPath,
                     app.installedVersion, app.latestVersion, app.latestVersionReleased,
                     app.updateRequired ? " required" : "", app.updateCached ? " cached" : "",
                     app.updatesAllowed ? " allowed" : "");
}

Lines shown(const std::vector<ApplicationInventory>& apps) {
  Lines lines;
  for (const ApplicationInventory& app : apps) lines.push_back(shown(app));
  return lines;
}

/// A Mac with three bundles installed.
struct UpdateCheckTest : testing::Test, DetectionRun {
  UpdateCheckTest() {
    platform.write(paths::runData, "<plist version=\"1.0\"><dict/></plist>");
    platform.addApplication("/Applications/Current.app", "org.current", "2.0");
    platform.addApplication("/Applications/Old.app", "org.old", "1.9");
    platform.addApplication("/Applications/Older.app", "org.older", "1");
  }

  void exclude(const std::string& text) {
    setPreferences("<key>excludedAppUpdates</key><array><string>" + text + "</string></array>");
  }
  Lines storedInventory() {
    auto stored = decodeJson<AppInventory>(platform.read(paths::appInventory));
    return stored && stored->appInventory ? shown(*stored->appInventory) : Lines{"no inventory"};
  }
  std::string lastCompliant() {
    return decodePropertyList<RunDataFile>(platform.read(paths::runData))->LastCompliant.value_or("never");
  }
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
  platform.processes.on("zsh: print Skip", {"SkiP\n"});
  platform.write("/var/db/receipts/org.tool.plist",
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
  EXPECT_EQ(shown(vorlu.updates.pendingUpdates), (Lines{old, tool, noMethod}));
  const Lines inventory = {"Current com.example.Current /Applications/Current.app 2.0->2.0 May cached allowed", old,
                           tool, noMethod};
  EXPECT_EQ(shown(vorlu.updates.appInventoryList), inventory);
  EXPECT_EQ(storedInventory(), inventory);
  EXPECT_EQ(platform.files.info(paths::appInventory)->mode, 0644U);
  EXPECT_EQ(cachedFiles(), (Lines{"Old-v1.10.dmg", "Tool-v4.pkg"}));
  EXPECT_EQ(vorlu.updates.pendingFrom, Walk::full);
  EXPECT_TRUE(vorlu.updates.skippedUpdates.empty());
  EXPECT_EQ(lastCompliant(), "never");
}

TEST_F(UpdateCheckTest, SummaryTellsWhatIsRequired) {
  const struct {
    std::string entries, summary, compliant;
  } cases[] = {
      {bundle("Old", "2"), "Update required: Old v2.", "never"},
      {bundle("Old", "2") + "," + bundle("Older", "1.1"), "Updates required: Old v2, Older v1.1.", "never"},
      {bundle("Old", "1.8") + "," + bundle("Current", "2.0"), "No updates are required", "Mar 02 2026 12:00:00 +0000"},
  };
  for (const auto& c : cases) {
    setCatalog("[" + c.entries + "]");
    checkForUpdates(vorlu, "", false);
    EXPECT_EQ(messages(), (Lines{"Updating installed App inventory...", c.summary}));
    EXPECT_EQ(lastCompliant(), c.compliant);
  }
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
  const struct {
    const char* what;
    std::string name, entries;
    bool foundBefore, found;
    Lines messages;
  } cases[] = {
      {"due",
       "Old",
       bundle("Old", "2") + "," + bundle("Older", "2"),
       false,
       true,
       {"Checking for Old updates...", "Update found for Old. Need to install v2"}},
      {"versions by processor alone",
       "Old",
       bundle("Old", "", R"("latestIntelVersion":"3","latestSiliconVersion":"4")"),
       false,
       true,
       {"Checking for Old updates...", "Update found for Old. Need to install v4"}},
      {"not due",
       "Current",
       bundle("Current", "2.0"),
       true,
       false,
       {"Checking for Current updates...", "No updates found for Current"}},
      {"not installed",
       "Absent",
       bundle("Absent", "9"),
       true,
       false,
       {"Checking for Absent updates...", "No updates found for Absent"}},
      {"switched off",
       "Old",
       bundle("Old", "2", R"("updatesAllowed":false)"),
       true,
       true,
       {"Skipping update check for Old because updates are not available for this App via Vorlu"}},
      {"not in the catalog",
       "Nobody",
       bundle("Old", "2") + "," + bundle("Bad", ""),
       true,
       true,
       {"Error: No latest version found for Bad. Unable to check for updates for this App"}},
      {"twice in the catalog",
       "Old",
       bundle("Old", "2") + "," + bundle("Old", "3"),
       false,
       true,
       {"Checking for Old updates...", "Update found for Old. Need to install v2", "Checking for Old updates...",
        "Update found for Old. Need to install v3", "Update found for Old. Need to install v3"}},
  };
  exclude("Old");
  for (const auto& c : cases) {
    setCatalog("[" + c.entries + "]");
    vorlu.updates.singleAppUpdateFound = c.foundBefore;
    checkForUpdates(vorlu, c.name, false);
    EXPECT_EQ(messages(), c.messages) << c.what;
    EXPECT_EQ(vorlu.updates.singleAppUpdateFound, c.found) << c.what;
    EXPECT_EQ(vorlu.updates.pendingFrom, Walk::single) << c.what;
    EXPECT_EQ(storedInventory(), Lines{"no inventory"}) << c.what;
  }
}

TEST_F(UpdateCheckTest, AppsWithoutABuildForTheProcessorAreLeftOut) {
  const std::string intel = "Old is not universal and not supported on Intel Macs. Skipping update check...";
  const std::string silicon = "Old is not universal and not supported on Apple Silicon Macs. Skipping update check...";
  const struct {
    const char* what;
    std::string more;
    std::optional<int> cpu;
    std::string message;
  } cases[] = {
      {"Apple Silicon", R"("architecture":"arch","appleSiliconDownloadURL":"")", 12, silicon},
      {"Intel", R"("architecture":"arch","intelDownloadURL":"")", 7, intel},
      {"the other's URL", R"("architecture":"arch","intelDownloadURL":"")", 12, ""},
      {"absent URL", R"("architecture":"arch")", 7, ""},
      {"no such architecture", R"("architecture":"Arch","intelDownloadURL":"")", 7, ""},
      {"universal", R"("architecture":"universal","intelDownloadURL":"")", 7, ""},
      {"unknown processor", R"("architecture":"arch","intelDownloadURL":"","appleSiliconDownloadURL":"")", {}, ""},
  };
  for (const auto& c : cases) {
    platform.device.cpu = c.cpu;
    setCatalog("[" + bundle("Old", "2", c.more) + "]");
    checkForUpdates(vorlu, "", true);
    Lines expected = {"Updating installed App inventory..."};
    if (!c.message.empty()) expected.insert(expected.begin(), c.message);
    EXPECT_EQ(messages(), expected) << c.what;
    EXPECT_EQ(vorlu.updates.pendingUpdates.size(), c.message.empty() ? 1U : 0U) << c.what;
  }
}

TEST_F(UpdateCheckTest, VersionsByProcessorCountOnlyTogether) {
  const std::string pair = R"("latestIntelVersion":"5","latestSiliconVersion":"6")";
  const struct {
    std::string latest, more;
    int cpu;
    std::string version;
  } cases[] = {{"4", pair, 7, "5"},
               {"4", pair, 12, "6"},
               {"4", pair, 18, "4"},
               {"", pair, 18, ""},
               {"4", R"("latestIntelVersion":"5")", 7, "4"},
               {"4", R"("latestIntelVersion":"5","latestSiliconVersion":"")", 7, "4"},
               {"", R"("latestIntelVersion":"5")", 7, ""}};
  for (const auto& c : cases) {
    platform.device.cpu = c.cpu;
    setCatalog("[" + bundle("Old", c.latest, c.more) + "]");
    checkForUpdates(vorlu, "Old", false);
    const auto& pending = vorlu.updates.pendingUpdates;
    EXPECT_EQ(pending.empty() ? "" : pending.front().latestVersion, c.version) << c.more << c.cpu;
  }
}

TEST_F(UpdateCheckTest, InventoryIsReplacedWholeOrNotAtAll) {
  setCatalog("[" + bundle("Current", "2.0") + "]");
  platform.write(paths::appInventory, "old");
  platform.files.failWrite(2);  // the first write is the log's
  checkForUpdates(vorlu, "", true);
  EXPECT_EQ(platform.read(paths::appInventory), "old");
  EXPECT_THAT(messages(), testing::ElementsAre("Updating installed App inventory...",
                                               testing::StartsWith("Error writing to App Inventory JSON file: ")));

  platform.files.heal();
  ASSERT_TRUE(platform.files.remove(paths::appInventory));
  platform.makeFolder(paths::appInventory + "/in the way");
  checkForUpdates(vorlu, "", true);
  EXPECT_EQ(storedInventory().size(), 1U);
  EXPECT_EQ(messages(), Lines{"Updating installed App inventory..."});
}

TEST_F(UpdateCheckTest, AnEmptyCatalogLeavesAnEmptyInventory) {
  platform.write(paths::offlineData, "[]");
  platform.clock.set(VirtualClock::defaultStart - 9 * 3600);  // the server isn't asked at night
  vorlu.keys.inventory = VorluSecrets{{{{"live_blueprints", "http://127.0.0.1:1/", "token"}}}};
  setPreferences("<key>allowedAppUpdates</key><array><string>Foo</string></array>");
  checkForUpdates(vorlu, "", false);
  EXPECT_EQ(messages(), (Lines{"Obtaining Vorlu data...",
                               "Error: Invalid App identifier specified in the allowed App updates list: Foo",
                               "For valid App identifiers, see the App catalog", "Obtaining Vorlu data...",
                               "Updating installed App inventory...", "No updates are required"}));
  EXPECT_EQ(storedInventory(), Lines{});
}

TEST_F(UpdateCheckTest, AWalkReadsEachApplicationOnce) {
  struct CountingFiles : FaultyFileManager {
    using FaultyFileManager::FaultyFileManager;
    Result<std::string> read(const std::string& path, std::size_t cap) override {
      if (path.ends_with("Info.plist")) ++plistReads;
      return FaultyFileManager::read(path, cap);
    }
    Result<Lines> list(const std::string& path) override {
      ++listings;
      return FaultyFileManager::list(path);
    }
    int plistReads = 0;
    int listings = 0;
  };
  CountingFiles counting(platform.files);
  Platform counted{platform.clock,     counting,          platform.processes,   platform.urls,
                   platform.security,  platform.keychain, platform.consoleUser, platform.device,
                   platform.power,     platform.cameras,  platform.focus,       platform.applications,
                   platform.systemLog, platform.console,  platform.webView};
  Vorlu other(counted, site);
  setCatalog("[" + bundle("Current", "2.0") + "," + bundle("Old", "1.9") + "," + bundle("Older", "1") + "," +
             bundle("Absent", "1", R"("appPrefixName":"Nothing")") + "," +
             bundle("Gone", "1", R"("appPrefixName":"Nothing")") + "]");
  other.catalog.entries = vorlu.catalog.entries;
  checkForUpdates(other, "", true);
  EXPECT_EQ(counting.plistReads, 3);
  EXPECT_EQ(counting.listings, 2);  // cache and /Applications
}

}  // namespace
}  // namespace vorlu::test
