#include "vorlu/detection/download_cache.h"

#include <utime.h>

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

TEST(DownloadCache, NamesFilesSoThatEveryAppHasOne) {
  EXPECT_EQ(cacheFileStem("Foo Bar  Pro", "1.2 (3)"), "FooBarPro-v1.2 (3)");
  EXPECT_EQ(cacheFileStem("../A/B", "1/2"), "..-A-B-v1-2");
  EXPECT_EQ(cacheFileStem(std::string_view("A\0B", 3), ""), "A-B-v");
}

TEST(DownloadCache, PurgesEveryVersionOfOneApp) {
  const Lines cached = {"-v1.pkg", "FooBar-v1.dmg", "FooBar-v2", "FooBarPro-v1.dmg", "MyFooBar-v3.zip"};
  const struct {
    std::string name;
    Lines left;
  } cases[] = {
      {"Foo Bar", {"-v1.pkg", "FooBarPro-v1.dmg"}},  // by containment: another app's longer name counts as well
      {"Foo", cached},
      {"foobar", cached},
      {"", cached},
      {"  ", cached},
  };
  for (const auto& c : cases) {
    AgentRun run;
    for (const std::string& name : cached) run.cacheFile(name);
    DirectoryListings listings(run.mac.files);
    EXPECT_EQ(listCacheContains(run.vorlu, c.name, listings), c.name.starts_with("Foo")) << c.name;
    purgeCache(run.vorlu, c.name, listings, MissingCache::logged);
    EXPECT_EQ(run.cachedFiles(), c.left) << c.name;
    EXPECT_EQ(listCacheContains(run.vorlu, "MyFooBar", listings), c.name != "Foo Bar") << c.name;
    EXPECT_EQ(run.messages(), Lines{}) << c.name;
  }
}

TEST(DownloadCache, CleansWhatNoPendingUpdateWants) {
  AgentRun run;
  for (const auto& [name, version] : {std::pair("Foo Bar", "1.2"), std::pair("A/B", "3")}) {
    ApplicationInventory pending;
    pending.appName = name;
    pending.latestVersion = version;
    run.vorlu.updates.pendingUpdates.push_back(pending);
  }
  for (const char* name : {"FooBar-v1.2.dmg", "FooBar-v1.2.zip.tmp", "FooBar-v1.2.cdr", "FooBar-v1.zip", "A-B-v3.tbz",
                           "X.dmgFooBar-v1.2", ".dmgFooBar-v1.2", ".vorlu-new", ".vorlu-old"}) {
    run.cacheFile(name);
  }
  const auto setAge = [&run](const std::string& name, int hours) {
    const auto time = static_cast<time_t>(run.mac.clock.now()) - hours * 3600;
    const utimbuf times{time, time};
    ASSERT_EQ(utime((run.mac.root() + paths::downloads + "/" + name).c_str(), &times), 0);
  };
  setAge(".vorlu-new", 23);
  setAge(".vorlu-old", 25);
  cleanCache(run.vorlu);
  EXPECT_EQ(run.cachedFiles(), (Lines{".dmgFooBar-v1.2", ".vorlu-new", "A-B-v3.tbz", "FooBar-v1.2.dmg"}));
  const auto removed = [](const std::string& item) {
    return "Removing cached update file " + item + " as the update is no longer required";
  };
  EXPECT_EQ(run.messages(), (Lines{removed("FooBar-v1.2.cdr"), removed("FooBar-v1.2.zip.tmp"), removed("FooBar-v1.zip"),
                                   removed("X.dmgFooBar-v1.2")}));
}

}  // namespace
}  // namespace vorlu::test
