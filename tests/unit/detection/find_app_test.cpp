#include "vorlu/detection/find_app.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

const std::string threeApps = R"([
  {"appName":"Foo","appIdentifier":"com.example.foo","serverName":"foo","legacyServerName":"oldfoo",
   "appPath":"/Applications/Foo.app","appType":"appBundle"},
  {"appName":"Bar","appIdentifier":"com.example.bar","serverName":"shared","appPath":"/Applications/Bar.app/"},
  {"appName":"Baz","appIdentifier":"com.example.baz","serverName":"shared","legacyServerName":"com.example.foo2"},
  {}])";

TEST(FindApp, SelectsTheLastEntryOfAnyKey) {
  const std::pair<const char*, std::string> cases[] = {
      {"Foo", "Foo"},          {"com.example.foo", "Foo"},  {"foo", "Foo"},
      {"oldfoo", "Foo"},       {"shared", "Baz"},           {"FOO", ""},
      {"com.example.Foo", ""}, {"com.example.foo2", "Baz"}, {"", ""}};
  for (const auto& [text, name] : cases) {
    AgentRun run;
    run.setCatalog(threeApps);
    EXPECT_EQ(findApp(run.vorlu, text), !name.empty()) << text;
    EXPECT_EQ(run.vorlu.currentApp.appName, name) << text;
    const bool current = text == std::string("com.example.foo");
    EXPECT_EQ(run.vorlu.currentApp.legacyIdentifierUsed, !name.empty() && !current) << text;
  }
}

TEST(FindApp, NeverLeavesAnotherAppsLocation) {
  AgentRun run;
  run.mac.addApplication("/Applications/Foo.app", "org.foo", "1");
  run.mac.makeFolder("/Applications/Bar.app");
  run.setCatalog(threeApps);
  const CurrentApp& app = run.vorlu.currentApp;
  const auto found = [&app] { return Lines{app.installedPath, app.installedName, app.installedBundleIdentifier}; };
  const Lines foo = {"/Applications/Foo.app", "Foo", "org.foo"};

  ASSERT_TRUE(findApp(run.vorlu, "oldfoo"));
  EXPECT_EQ(found(), foo);
  ASSERT_FALSE(findApp(run.vorlu, "nothing"));
  EXPECT_EQ(found(), foo);
  ASSERT_TRUE(findApp(run.vorlu, "com.example.bar"));  // no bundle by its type
  EXPECT_EQ(found(), (Lines{"/Applications/Bar.app/", "Bar", ""}));
  EXPECT_TRUE(app.legacyIdentifierUsed);  // for the rest of the process
  ASSERT_TRUE(findApp(run.vorlu, "com.example.foo"));
  ASSERT_TRUE(findApp(run.vorlu, "Baz"));
  EXPECT_EQ(found(), (Lines{"", "", ""}));

  ASSERT_TRUE(run.mac.files.remove("/Applications/Foo.app/Contents/Info.plist"));
  ASSERT_TRUE(findApp(run.vorlu, "Foo"));
  EXPECT_EQ(app.installedBundleIdentifier, "Unknown");
}

TEST(FindApp, CopiesDefaultsAndExpandsWhatIsMeantToBe) {
  AgentRun run;
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

std::string listPreference(const std::string& key, const Lines& texts) {
  std::string list = "<key>" + key + "</key><array>";
  for (const std::string& text : texts) list += "<string>" + text + "</string>";
  return list + "</array>";
}

TEST(AllowedLists, FollowCatalogAndPreferences) {
  const std::string foo = "com.example.foo", bar = "com.example.bar", baz = "com.example.baz";
  const auto expectAllowed = [&](const Lines& identifiers, const Lines& allowed, const Lines& excluded,
                                 const Lines& messages = {}) {
    AgentRun run;
    run.setCatalog(threeApps);
    run.setPreferences("GeneralOptions",
                       listPreference("allowedAppUpdates", allowed) + listPreference("excludedAppUpdates", excluded));
    run.vorlu.catalog.allowedUpdateIdentifiers = {"left over"};
    buildAllowedLists(run.vorlu);
    const std::string unnamed = "Error: No app identifier was found for . If this issue persists, contact ";
    EXPECT_EQ(run.messages(), joined({unnamed + run.site.supportContact()}, messages));
    EXPECT_EQ(run.vorlu.catalog.catalogIdentifiersForUpdate, (Lines{foo, bar, baz}));
    EXPECT_EQ(run.vorlu.catalog.allowedUpdateIdentifiers, identifiers);
    EXPECT_EQ(run.vorlu.catalog.allowedInstallIdentifiers, identifiers);
  };
  expectAllowed({foo, bar, baz}, {}, {});
  expectAllowed({bar}, {}, {"oldfoo", "Nobody", "shared"});
  expectAllowed({baz, foo}, {"shared", "Foo"}, {});
  expectAllowed({bar}, {"Nobody", bar}, {},
                {"Error: Invalid App identifier specified in the allowed App updates list: Nobody",
                 "For valid App identifiers, see the App catalog"});
  // exclusion by identifier beats allowance
  expectAllowed({bar}, {"Foo", bar}, {foo, "Bar"},
                {"Warning: Foo was defined in the allowed update array but was also found in the excluded update "
                 "array. Foo updates will not be allowed"});
  AgentRun run;
  run.setCatalog(R"([{"appName":"Foo","appIdentifier":""}])");
  run.vorlu.modes.standing = Standing::beside;
  EXPECT_EQ(endOf([&run] { buildAllowedLists(run.vorlu); }), 1);
  EXPECT_EQ(run.messages().front().find("Error: Could not collect Vorlu App information. "), 0U);
}

}  // namespace
}  // namespace vorlu::test
