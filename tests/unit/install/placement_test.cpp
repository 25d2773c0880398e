#include "vorlu/install/placement.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tests/unit/install/install_run.h"
#include "vorlu/install/copy_list.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Placement : public InstallRun {
 protected:
  Placement() {
    vorlu.currentApp.destinationPath = "/Applications";
    vorlu.currentApp.owner = vorlu.currentApp.group = "";
  }
  std::string put(const std::string& name, const std::string& text = "new") {
    mac.write(paths::output + "/" + name + "/file", text);
    return paths::output + "/" + name;
  }
  Strings applications() { return *mac.files.list("/Applications"); }
};

TEST_F(Placement, RefusesTargetsThatBelongToTheSystem) {
  const struct {
    const char* destination;
    const char* name;
  } cases[] = {
      {"", "Slides.app"}, {"Applications", "Slides.app"}, {"/", "Applications"},         {"/", ""},
      {"//.//", "Users"}, {"/Applications", ".."},        {"/Applications", "../Users"}, {"/Applications/../..", "x"},
      {"/Users", "."},    {"/Users/alice", "./."}};
  mac.write("/Users/alice/file", "kept");
  for (const auto& c : cases) {
    vorlu.currentApp.destinationPath = c.destination;
    messages();
    placeItems(vorlu, {{put("Slides.app"), c.name}}, true);
    const Lines lines = messages();
    ASSERT_EQ(lines.size(), 1U) << c.destination << " " << c.name;
    EXPECT_THAT(lines[0], HasSubstr("Error: Could not copy " + paths::output + "/Slides.app - "));
    EXPECT_EQ(mac.read("/Users/alice/file"), "kept");
    EXPECT_TRUE(mac.exists("/Applications"));
  }
}

TEST_F(Placement, EmptyNamePutsTheItemIntoTheDirectoryAndReplacesNothing) {
  vorlu.currentApp.destinationPath = "/Library/New Folder/Inner";
  placeItems(vorlu, {{put("Slides.app"), ""}}, true);
  EXPECT_EQ(mac.read("/Library/New Folder/Inner/Slides.app/file"), "new");
  EXPECT_EQ(mac.files.info("/Library/New Folder/Inner")->mode, 0755);
  placeItems(vorlu, {{put("Slides.app", "newer"), ""}}, true);
  EXPECT_EQ(mac.read("/Library/New Folder/Inner/Slides.app/file"), "new");
  EXPECT_THAT(*mac.files.list("/Library/New Folder/Inner"), ElementsAre("Slides.app"));
}

TEST_F(Placement, OneFailingItemDoesNotHoldUpTheOthers) {
  mac.write("/Applications/C/file", "old");
  placeItems(vorlu,
             {{put("A"), "A"}, {paths::output + "/missing", "B"}, {put("C"), "C"}, {paths::output + "/A/file", "D"}},
             true);
  EXPECT_THAT(applications(), ElementsAre("A", "C", "D"));
  EXPECT_EQ(mac.read("/Applications/C/file"), "new");
  EXPECT_EQ(mac.read("/Applications/D"), "new") << "an item inside another one";
}

TEST_F(Placement, KilledCopyIsClearedOrPutBack) {
  const struct {
    const char* what;
    Strings files;  ///< below /Applications, each with its own path as text
    const char* version;
  } cases[] = {
      {"while it copied", {"Slides.app/file", ".~/new/Slides.app/file"}, "Slides.app/file"},
      {"after the exchange", {"Slides.app/file", ".~/new/Slides.app/file", ".~/old/Other/x"}, "Slides.app/file"},
      {"with the old one aside", {".~/new/Slides.app/file", ".~/old/Slides.app/file"}, ".~/old/Slides.app/file"},
      {"with both there", {"Slides.app/file", ".~/old/Slides.app/file"}, "Slides.app/file"},
  };
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "", .status = 1});
  for (const auto& c : cases) {
    mac.write(paths::run + "/placement", "/Applications");
    for (const std::string& file : c.files) mac.write("/Applications/" + file, file);
    recoverPlacement(vorlu);
    EXPECT_EQ(mac.read("/Applications/Slides.app/file"), c.version) << c.what;
    EXPECT_FALSE(mac.exists("/Applications/.~")) << c.what;
    EXPECT_FALSE(mac.exists(paths::run + "/placement")) << c.what;
    mac.files.remove("/Applications/Slides.app");
    mac.files.remove("/Applications/Other");
  }
}

TEST_F(Placement, SettlesAnotherFolderBeforeItsNoteIsOverwritten) {
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "", .status = 1});
  mac.write(paths::run + "/placement", "/Library");
  mac.write("/Library/.~/old/Tool/file", "old");
  placeItems(vorlu, {{put("Slides.app"), "Slides.app"}}, true);
  EXPECT_EQ(mac.read("/Library/Tool/file"), "old");
  EXPECT_FALSE(mac.exists("/Library/.~"));
}

TEST_F(Placement, AnotherAgentsCopyIsLeftAlone) {
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "777\n"});
  mac.write(paths::run + "/placement", "/Applications");
  mac.write("/Applications/.~/new/Slides.app/file", "half");
  recoverPlacement(vorlu);
  EXPECT_TRUE(mac.exists("/Applications/.~/new/Slides.app/file"));
}

TEST_F(Placement, VolumeWithoutExchangeKeepsAnAppAtEveryFault) {
  // Writing calls of a replacement: directory, note, three folders, move, sync, exchange, then the two moves.
  for (const int faults : {8, 9, 10}) {
    mac.write("/Applications/Slides.app/file", "old");
    const std::string item = put("Slides.app");
    mac.files.failWrite(8);
    if (faults > 8) mac.files.failWritesFrom(8);
    placeItems(vorlu, {{item, "Slides.app"}}, true);
    mac.files.heal();
    EXPECT_EQ(mac.read("/Applications/Slides.app/file"), faults == 8 ? "new" : "old") << faults;
    EXPECT_THAT(applications(), ElementsAre("Slides.app"));
  }
}

TEST_F(Placement, NothingStandsUnderAHalfMadeName) {
  mac.write("/Applications/Slides.app/file", "old");
  vorlu.currentApp.mode = 750;
  const std::string item = put("Slides.app");
  std::filesystem::create_symlink("/private/etc", mac.root() + item + "/link");
  mac.makeFolder("/private/etc");
  const mode_t before = mac.files.info("/private/etc")->mode;
  placeItems(vorlu, {{item, "Slides.app"}}, false);
  EXPECT_EQ(mac.files.info("/Applications/Slides.app")->mode, 0750);
  EXPECT_EQ(mac.files.info("/Applications/Slides.app/file")->mode, 0750);
  EXPECT_EQ(mac.files.info("/Applications/Slides.app/link")->kind, FileKind::link);
  EXPECT_EQ(mac.files.info("/private/etc")->mode, before) << "links aren't followed";
  EXPECT_TRUE(mac.exists(item)) << "copied, not moved";
  vorlu.currentApp.setPermissions = false;
  std::filesystem::permissions(mac.root() + item + "/file", std::filesystem::perms(0604));
  placeItems(vorlu, {{item, "Slides.app"}}, false);
  EXPECT_EQ(mac.files.info("/Applications/Slides.app/file")->mode, 0604);
}

TEST(PlacementMode, ReadsDecimalDigitsAsOctal) {
  const std::pair<std::int64_t, std::optional<mode_t>> cases[] = {
      {755, 0755}, {4755, 04755}, {7, 07}, {0, std::nullopt}, {-1, {}}, {789, {}}, {10000, std::nullopt}};
  for (const auto& [digits, mode] : cases) EXPECT_EQ(modeFromDigits(digits), mode) << digits;
}

TEST(CopyName, FollowsCatalogOrFoundItem) {
  const struct {
    std::size_t count;
    const char* item;
    const char* destinationName;
    const char* appPath;
    const char* name;
  } cases[] = {
      {1, "Foo.app", "", "/Applications/Bar.app/", "Bar.app"},
      {1, "Foo.app", "Baz.app", "/Applications/Bar.app", "Baz.app"},
      {1, "REGEX:Foo.*", "", "/Applications/Bar.app", "Found.app"},
      {1, "REGEX:Foo.*", "Baz.app", "/x", "Baz.app"},
      {1, "INSTALLERAPP:Foo", "", "/x", "Found.app"},
      {2, "Foo.app", "Baz.app", "/x", "Found.app"},
      {1, "Foo.app", "", "", ""},
  };
  for (const auto& c : cases) {
    CurrentApp app;
    app.destinationName = c.destinationName;
    app.appPath = c.appPath;
    EXPECT_EQ(copyNameFor(app, c.count, c.item, "Some Folder/Found.app"), c.name) << c.item;
  }
}

}  // namespace
}  // namespace vorlu::test
