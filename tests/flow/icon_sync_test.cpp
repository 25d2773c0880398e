#include "vorlu/install/icon_sync.h"

#include <fmt/format.h>

#include "tests/unit/install/install_run.h"
#include "vorlu/prompts/app_icon.h"

namespace vorlu::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Not;

struct IconSync : InstallRun {
  IconSync() : InstallRun(false) { store({}); }
  /// An entry without a name says what its own failure needs.
  void add(const std::string& localIcon, const std::string& url, const std::string& hash = "") {
    AppBlueprints entry;
    if (!localIcon.empty()) entry.localIcon = localIcon;
    entry.cloudIcon = url;
    entry.iconHash = hash;
    vorlu.catalog.entries.push_back(entry);
  }
  void expectIcon(const std::string& name, const std::string& content) {
    const std::string path = paths::appIcons + "/" + name;
    EXPECT_EQ(mac.exists(path) ? mac.read(path) : "none", content) << name;
  }
  Lines sync() {
    syncIcons(vorlu);
    return messages();
  }
};

TEST_F(IconSync, FetchesWhatIsMissingOrChanged) {
  answers["/new icon.png"] = reply(200, "new");
  answers["/page"] = reply(200, " <!DOCTYPE html><p>Sign in");
  for (const char* kept : {"kept", "same", "changed", "lost"})
    mac.write(fmt::format("{}/{}", paths::appIcons, kept), "old");
  const std::string url = server.url("/new icon.png");
  add("missing", url), add("kept", url), add("same", url, sha256("old")), add("changed", url, sha256("new"));
  add("lost", server.url("/gone"), sha256("new")), add("page", server.url("/page")), add("nowhere", "");
  add("../outside", url), add("", url);
  const Lines lines = sync();
  expectIcon("missing", "new"), expectIcon("kept", "old"), expectIcon("same", "old"), expectIcon("changed", "new");
  expectIcon("lost", "none"), expectIcon("page", "none"), expectIcon("../outside", "none");
  EXPECT_THAT(lines, AllOf(Contains("Downloading icon: missing..."), Contains("Downloading new icon: changed..."),
                           Contains("Error: The specified URL is empty. Cannot download file")));
  EXPECT_EQ(lines.back(), "Icon check complete");
  EXPECT_EQ(mac.clock.sleeps().size(), 4u);  // one for each download
  EXPECT_EQ(runData().LastIconCheck, static_cast<std::int64_t>(mac.clock.now()));
}

TEST_F(IconSync, GivesUpOnServersThatCannotBeReached) {
  for (const char* name : {"a", "b", "c", "d"}) add(name, "http://127.0.0.1:1/icon");
  const Lines lines = sync();
  EXPECT_THAT(lines, AllOf(Contains("Downloading icon: c..."), Not(Contains("Downloading icon: d...")),
                           Not(Contains("Icon check complete"))));
}

TEST_F(IconSync, AnAppsIconIsTheBestThereIs) {
  answers["/icon.png"] = reply(200, "icon");
  AppIconSource app{"Slides", "slides.png", server.url("/gone")};
  const std::string unknown = paths::icons + "/unknownIcon.png", local = paths::appIcons + "/slides.png";
  EXPECT_EQ(resolveAppIcon(vorlu, app), "");
  mac.write(unknown, "icon");
  EXPECT_EQ(resolveAppIcon(vorlu, app), unknown);
  EXPECT_EQ(messages(), Lines{"Warning: No icon could be found for Slides. Using " + unknown + " instead"});
  app.cloudIcon = server.url("/icon.png");
  EXPECT_EQ(resolveAppIcon(vorlu, app), app.cloudIcon);
  mac.write(local, "icon");
  EXPECT_EQ(resolveAppIcon(vorlu, app), local);
}

}  // namespace
}  // namespace vorlu::test
