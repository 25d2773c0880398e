#include "vorlu/detection/find_app.h"

#include "tests/unit/detection/detection_run.h"
#include "vorlu/state/end_run.h"

namespace vorlu::test {
namespace {

const std::string threeApps = R"([
  {"appName":"Foo","appIdentifier":"com.example.foo","serverName":"foo","legacyServerName":"oldfoo",
   "appPath":"/Applications/Foo.app","appType":"appBundle"},
  {"appName":"Bar","appIdentifier":"com.example.bar","serverName":"shared","appPath":"/Applications/Bar.app"},
  {"appName":"Baz","appIdentifier":"com.example.baz","serverName":"shared","legacyServerName":"com.example.foo2"},
  {}])";

TEST(FindApp, SelectsTheLastEntryOfAnyKey) {
  const struct {
    std::string text, name;
    bool legacy;
  } cases[] = {
      {"Foo", "Foo", true},
      {"com.example.foo", "Foo", false},
      {"foo", "Foo", true},
      {"oldfoo", "Foo", true},
      {"shared", "Baz", true},
      {"com.example.foo2", "Baz", true},
      {"com.example.Foo", "", false},
      {"FOO", "", false},
      {"", "", false},
  };
  for (const auto& c : cases) {
    DetectionRun run;
    run.setCatalog(threeApps);
    EXPECT_EQ(findApp(run.vorlu, c.text), !c.name.empty()) << c.text;
    EXPECT_EQ(run.vorlu.currentApp.appName, c.name) << c.text;
    EXPECT_EQ(run.vorlu.currentApp.legacyIdentifierUsed, c.legacy) << c.text;
  }
}

TEST(FindApp, NeverLeavesAnotherAppsLocation) {
  DetectionRun run;
  run.platform.addApplication("/Applications/Foo.app", "org.foo", "1");
  run.platform.makeFolder("/Applications/Bar.app");
  run.setCatalog(threeApps);
  const CurrentApp& app = run.vorlu.currentApp;
  const auto found = [&app] { return Lines{app.installedPath, app.installedName, app.installedBundleIdentifier}; };
  const Lines foo = {"/Applications/Foo.app", "Foo", "org.foo"};

  ASSERT_TRUE(findApp(run.vorlu, "oldfoo"));
  EXPECT_EQ(found(), foo);
  ASSERT_FALSE(findApp(run.vorlu, "nothing"));
  EXPECT_EQ(found(), foo);
  ASSERT_TRUE(findApp(run.vorlu, "com.example.bar"));  // no bundle by its type
  EXPECT_EQ(found(), (Lines{"/Applications/Bar.app", "Bar", ""}));
  EXPECT_TRUE(app.legacyIdentifierUsed);  // for the rest of the process
  ASSERT_TRUE(findApp(run.vorlu, "com.example.foo"));
  ASSERT_TRUE(findApp(run.vorlu, "Baz"));
  EXPECT_EQ(found(), (Lines{"", "", ""}));

  ASSERT_TRUE(run.platform.files.remove("/Applications/Foo.app/Contents/Info.plist"));
  ASSERT_TRUE(findApp(run.vorlu, "Foo"));
  EXPECT_EQ(app.installedBundleIdentifier, "Unknown");
}

TEST(FindApp, CopiesDefaultsAndExpandsWhatIsMeantToBe) {
  DetectionRun run;
  run.setCatalog(
      R"([{"appName":"Foo %latestVersion%","latestVersion":"9","infoPlistPath":"%latestVersion%%currentUser%",
    "universalDownloadURLCode":"u%latestVersion%","intelDownloadURLCode":"i%latestVersion%",
    "siliconDownloadURLCode":"s%latestVersion%","universalDownloadURL":"%latestVersion%","appPath":
    "/%latestVersion%/%currentUser%/%latestVersion%","alternatePaths":["/%currentUser%/%latestVersion%"],"mode":0}])");
  run.vorlu.updates.currentUpdateNumber = 2;
  run.vorlu.updates.pendingUpdates.resize(3);
  ASSERT_TRUE(findApp(run.vorlu, "Foo %latestVersion%"));
  const CurrentApp& app = run.vorlu.currentApp;
  EXPECT_EQ((Lines{app.infoPlistPath, app.universalDownloadURLCode, app.intelDownloadURLCode,
                   app.siliconDownloadURLCode, app.universalDownloadURL, app.appPath, app.alternatePaths.front(),
                   app.progressTitle, app.owner, app.group}),
            (Lines{"9%currentUser%", "u9", "i9", "s9", "%latestVersion%", "/9/alice/9", "/alice/%latestVersion%",
                   "Updating Foo %latestVersion% (2 of 3)", "root", "admin"}));
  EXPECT_EQ(app.mode, 0);
  EXPECT_TRUE(app.verifySignature);
}

TEST(FindApp, LoadsTheLocalCopyWhenToldTo) {
  DetectionRun run;
  run.platform.write(paths::offlineData, threeApps);
  run.vorlu.keys.inventory = VorluSecrets{{{{"live_blueprints", "http://127.0.0.1:1/", "token"}}}};
  EXPECT_TRUE(findApp(run.vorlu, "Baz", CatalogSource::offline));
  EXPECT_EQ(run.messages(), Lines{"Obtaining Vorlu data..."});
  EXPECT_TRUE(findApp(run.vorlu, "Bar"));
  EXPECT_EQ(run.messages(), Lines{});
}

std::string listPreference(const std::string& key, const Lines& texts) {
  std::string list = "<key>" + key + "</key><array>";
  for (const std::string& text : texts) list += "<string>" + text + "</string>";
  return list + "</array>";
}

TEST(AllowedLists, FollowCatalogAndPreferences) {
  const std::string foo = "com.example.foo";
  const std::string bar = "com.example.bar";
  const std::string baz = "com.example.baz";
  const Lines invalid = {"Error: Invalid App identifier specified in the allowed App updates list: Nobody",
                         "For valid App identifiers, see the App catalog"};
  const struct {
    const char* what;
    Lines allowed, excluded, identifiers, messages;
  } cases[] = {
      {"neither list", {}, {}, {foo, bar, baz}, {}},
      {"excluded by any key", {}, {"oldfoo", "Nobody", "shared"}, {bar}, {}},
      {"all excluded", {}, {foo, bar, baz}, {}, {}},
      {"allowed by any key, in the order of the list", {"shared", "Foo"}, {}, {baz, foo}, {}},
      {"unknown text", {"Nobody", bar}, {}, {bar}, invalid},
      {"exclusion by identifier beats allowance",
       {"Foo", bar},
       {foo, "Bar"},
       {bar},
       {"Warning: Foo was defined in the allowed update array but was also found in the excluded update array. Foo "
        "updates will not be allowed"}},
  };
  for (const auto& c : cases) {
    DetectionRun run;
    run.setCatalog(threeApps);
    run.setPreferences(listPreference("allowedAppUpdates", c.allowed) +
                       listPreference("excludedAppUpdates", c.excluded));
    run.vorlu.catalog.allowedUpdateIdentifiers = {"left over"};
    buildAllowedLists(run.vorlu);
    Lines messages = c.messages;
    messages.insert(messages.begin(), "Error: No app identifier was found for . If this issue persists, contact " +
                                          run.site.supportContact());
    EXPECT_EQ(run.messages(), messages) << c.what;
    EXPECT_EQ(run.vorlu.catalog.catalogIdentifiersForUpdate, (Lines{foo, bar, baz})) << c.what;
    EXPECT_EQ(run.vorlu.catalog.catalogIdentifiersForInstall, (Lines{foo, bar, baz})) << c.what;
    EXPECT_EQ(run.vorlu.catalog.allowedUpdateIdentifiers, c.identifiers) << c.what;
    EXPECT_EQ(run.vorlu.catalog.allowedInstallIdentifiers, c.identifiers) << c.what;
  }
}

TEST(AllowedLists, LeaveTheLastMatchSelected) {
  DetectionRun run;
  run.platform.makeFolder("/Applications/Bar.app");
  run.setCatalog(threeApps);
  run.setPreferences(listPreference("allowedAppUpdates", {"Foo", "Bar", "Nobody"}));
  buildAllowedLists(run.vorlu);
  EXPECT_EQ(run.vorlu.currentApp.installedPath, "/Applications/Bar.app");
}

TEST(AllowedLists, EndTheRunWhenNothingIsKnown) {
  DetectionRun run;
  run.setCatalog(R"([{"appName":"Foo","appIdentifier":""}])");
  run.vorlu.modes.standing = Standing::beside;
  try {
    buildAllowedLists(run.vorlu);
    FAIL() << "the run goes on";
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.status, 1);
  }
  const std::string& contact = run.site.supportContact();
  EXPECT_EQ(run.messages(),
            (Lines{"Error: Could not collect Vorlu App information. If the problem persists, contact " + contact,
                   "Exiting..."}));
  EXPECT_THAT(run.platform.read(paths::jamfLog),
              testing::EndsWith("Error: Could not collect App information. If the problem persists, contact " +
                                contact + "\n"));
}

}  // namespace
}  // namespace vorlu::test
