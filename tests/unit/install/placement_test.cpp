#include "vorlu/install/placement.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tests/unit/install/install_run.h"
#include "vorlu/install/copy_list.h"
#include "vorlu/install/install_job.h"
#include "vorlu/state/replacement.h"

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
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.reply = [this](const Command&) { return agents; }});
  }
  std::string put(const std::string& name, const std::string& text = "new") {
    mac.write(paths::output + "/" + name + "/file", text);
    return paths::output + "/" + name;
  }
  std::string agents;  ///< process ids of the others
  const struct {
    std::string note = paths::run + "/placement-777", folder = ".~_--_----__";
  } killed;  ///< what a run of process 777 has left
  Strings applications() { return *mac.files.list("/Applications"); }
};

TEST_F(Placement, RefusesTargetsThatBelongToTheSystem) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "Slides.app"}, {"Applications", "Slides.app"}, {"/", "Applications"},         {"/", ""},
      {"//.//", "Users"}, {"/Applications", ".."},        {"/Applications", "../Users"}, {"/Applications/../..", "x"},
      {"/Users", "."},    {"/Users/alice", "./."}};
  mac.write("/Users/alice/file", "kept");
  for (const auto& [destination, name] : cases) {
    vorlu.currentApp.destinationPath = destination;
    placeItems(vorlu, {{put("Slides.app"), name}}, true);
    EXPECT_THAT(messages(), ElementsAre(HasSubstr("Error: Could not copy " + paths::output + "/Slides.app - ")))
        << destination << " " << name;
    EXPECT_EQ(mac.read("/Users/alice/file"), "kept");
    EXPECT_TRUE(mac.exists("/Applications"));
  }
  vorlu.currentApp.destinationPath = std::string("/Applications/\0x", 16);
  placeItems(vorlu, {{put("Slides.app"), "a"}}, true);
  EXPECT_THAT(messages(), ElementsAre(HasSubstr("names no item")));
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

TEST_F(Placement, RightsComeFromTheCatalogAlone) {
  for (const bool mayMove : {false, true}) {
    for (const std::int64_t mode : {0, 4750}) {
      const std::string program = put("A.app") + "/file";
      ASSERT_EQ(::chmod((mac.root() + program).c_str(), 06755), 0);
      vorlu.currentApp.mode = mode;
      placeItems(vorlu, {{paths::output + "/A.app", "A.app"}}, mayMove);
      EXPECT_EQ(mac.files.info("/Applications/A.app/file")->mode, mode == 0 ? 0755U : 04750U) << mode << mayMove;
    }
  }
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
      {"while it copied", {"Slides.app/file", "@/new/Slides.app/file"}, "Slides.app/file"},
      {"after the exchange", {"Slides.app/file", "@/new/Slides.app/file", "@/old/Other/x"}, "Slides.app/file"},
      {"with the old one aside", {"@/new/Slides.app/file", "@/old/Slides.app/file"}, "@/old/Slides.app/file"},
      {"with both there", {"Slides.app/file", "@/old/Slides.app/file"}, "Slides.app/file"},
  };
  for (const auto& c : cases) {
    mac.write(killed.note, "/Applications");
    for (const std::string& file : c.files) mac.write("/Applications/" + replacedAll(file, "@", killed.folder), file);
    recoverPlacement(vorlu);
    EXPECT_EQ(mac.read("/Applications/Slides.app/file"), c.version) << c.what;
    EXPECT_FALSE(mac.exists("/Applications/" + killed.folder)) << c.what;
    EXPECT_FALSE(mac.exists(killed.note)) << c.what;
    mac.files.remove("/Applications/Slides.app");
    mac.files.remove("/Applications/Other");
  }
}

TEST_F(Placement, WhatStandsInTheStagingFoldersPlaceGoesAlone) {
  const std::string place = "/Applications/.~-----_-_____";  // process 4000's
  mac.write("/Users/alice/old/Slides.app/file", "hers");
  const std::function<void()> obstacles[] = {
      [&] { mac.write(place, "a file"); },
      [&] { std::filesystem::create_directory_symlink("../Users/alice", mac.root() + place); }};
  for (const auto& stands : obstacles) {
    stands();
    placeItems(vorlu, {{put("Slides.app"), "Slides.app"}}, true);
    EXPECT_EQ(mac.read("/Applications/Slides.app/file"), "new");
    EXPECT_THAT(applications(), ElementsAre("Slides.app"));
    EXPECT_EQ(mac.read("/Users/alice/old/Slides.app/file"), "hers");
    EXPECT_THAT(messages(), IsEmpty());
    mac.files.remove("/Applications/Slides.app");
  }
}

TEST_F(Placement, NoteThatCannotBeReadStays) {
  mac.write(killed.note + "/file", "");  // reading a folder fails
  recoverPlacement(vorlu);
  EXPECT_TRUE(mac.exists(killed.note));
}

TEST_F(Placement, TwoAgentsHaveTheirOwnNotesAndFolders) {
  const std::string beside = "778 1 root 05:00 vorlu\n";
  const std::string above = beside + "3999 778 root 00:09 zsh\n4000 3999 root 00:09 vorlu\n";
  const std::string theirs = "/Applications/.~-_-_----__/new/Draw.app/file", note = paths::run + "/placement-778";
  agents = "778\n";
  mac.write(note, "/Applications");
  mac.write(theirs, "half");
  std::string table;
  mac.processes.onPrefix("/bin/ps -Aww ", {.reply = [&table](const Command&) { return table; }});
  for (const std::string& agentTable : {beside, above}) {
    table = agentTable;
    mac.write(killed.note, "/Library");
    mac.write("/Library/" + killed.folder + "/old/Tool/file", "old");
    placeItems(vorlu, {{put("Slides.app"), "Slides.app"}}, true);
    EXPECT_EQ(mac.read("/Library/Tool/file"), "old") << "of an agent that has ended";
    EXPECT_TRUE(mac.exists(theirs) && mac.exists(note)) << "of one that works: " << table;
    EXPECT_THAT(applications(), ElementsAre(".~-_-_----__", "Slides.app"));
    EXPECT_FALSE(mac.exists(paths::run + "/placement-4000"));
    mac.files.remove("/Library/Tool");
  }
}

TEST_F(Placement, VolumeWithoutExchangeKeepsAnAppAtEveryFault) {
  // Writing calls of a replacement: note, three folders, move, sync, exchange, then the two moves.
  for (const bool exchangeAlone : {true, false}) {
    mac.write("/Applications/Slides.app/file", "old");
    const std::string item = put("Slides.app");
    exchangeAlone ? mac.files.failWrite(7) : mac.files.failWritesFrom(7);
    placeItems(vorlu, {{item, "Slides.app"}}, true);
    mac.files.heal();
    EXPECT_EQ(mac.read("/Applications/Slides.app/file"), exchangeAlone ? "new" : "old");
    EXPECT_THAT(applications(), ElementsAre("Slides.app"));
  }
}

TEST_F(Placement, ModesAreSetWithoutFollowingLinks) {
  mac.write("/Applications/Slides.app/file", "old");
  vorlu.currentApp.mode = 750;
  const std::string item = put("Slides.app");
  std::filesystem::create_symlink("/private/etc", mac.root() + item + "/link");
  const mode_t before = mac.files.info("/private/etc")->mode;
  const auto mode = [this](const std::string& path) { return mac.files.info("/Applications/Slides.app" + path)->mode; };
  placeItems(vorlu, {{item, "Slides.app"}}, false);
  EXPECT_EQ(mode(""), 0750);
  EXPECT_EQ(mode("/file"), 0750);
  EXPECT_EQ(mac.files.info("/private/etc")->mode, before);
  EXPECT_TRUE(mac.exists(item)) << "copied, not moved";
  vorlu.currentApp.setPermissions = false;
  std::filesystem::permissions(mac.root() + item + "/file", std::filesystem::perms(0604));
  placeItems(vorlu, {{item, "Slides.app"}}, false);
  EXPECT_EQ(mode("/file"), 0604);
}

TEST(PlacementMode, ReadsDecimalDigitsAsOctal) {
  const std::pair<std::int64_t, std::optional<mode_t>> cases[] = {
      {755, 0755}, {4755, 04755}, {7, 07}, {0, std::nullopt}, {-1, {}}, {789, {}}, {10000, std::nullopt}};
  for (const auto& [digits, mode] : cases) EXPECT_EQ(modeFromDigits(digits), mode) << digits;
}

TEST_F(Placement, ItemsAreProvenOrNotListed) {
  InstallRequest request;
  InstallJob job(vorlu, request);
  CurrentApp& app = vorlu.currentApp;
  app.expectedCodeSignature = "Example (AB)";
  put("Slides.app"), mac.write(paths::output + "/tool.bin", "x"), mac.write(paths::output + "/plain", "x");
  mac.processes.onPrefix("/usr/bin/codesign", {.output = "code object is not signed at all", .status = 1});
  const std::pair<Strings, bool> cases[] = {
      {{"tool.bin"}, true},  // a single plain file with a suffix bears no signature
      {{"Slides.app"}, false}, {{"plain"}, false}, {{"tool.bin", "tool.bin"}, false},
      {{""}, false},           {{}, false},        {{"../Output/tool.bin"}, false},
  };
  for (const auto& [items, listed] : cases) {
    app.sourceItems = items;
    EXPECT_EQ(std::holds_alternative<std::vector<AppCopyArr>>(buildCopyList(job, paths::output)), listed)
        << fmt::format("{}", fmt::join(items, ", "));
  }
  app.verifySignature = false, app.universalInstallerHash = sha256("x"), app.architecture = "universal";
  app.sourceItems = {"Slides.app", "plain"}, job.filePath = paths::output + "/plain";
  EXPECT_EQ(buildCopyList(job, paths::output).index(), 0U) << "the hash is the whole download's";
}

TEST_F(Placement, LinksAmongItemsLeadToSomethingInTheirNewPlace) {
  InstallRequest request;
  InstallJob job(vorlu, request);
  job.filePath = paths::output + "/download";
  mac.write(job.filePath, "x");
  put("real/Slides.app"), put("Tools.app");
  const auto link = [&](const char* target, const std::string& name) {
    std::filesystem::create_symlink(target, mac.root() + paths::output + "/" + name);
  };
  link("real/Slides.app", "Slides.app"), link("Tools.app/file", "tool"), link("../Tools.app", "real/Inner.app");
  link("Current", "latest"), link("Tools.app", "Current"), link("../real/Slides.app", "real/Again.app");
  CurrentApp& app = vorlu.currentApp;
  app.verifySignature = false, app.universalInstallerHash = sha256("x"), app.architecture = "universal";
  const std::pair<Strings, Strings> cases[] = {
      {{"Slides.app"}, {"real/Slides.app"}},
      {{"Slides.app", "Tools.app"}, {"real/Slides.app", "Tools.app"}},
      {{"tool", "Tools.app"}, {"tool", "Tools.app"}},  // they stay side by side
      {{"tool", "Slides.app"}, {"Tools.app/file", "real/Slides.app"}},
      {{"real/Inner.app", "Tools.app"}, {"Tools.app", "Tools.app"}},
      {{"latest", "Tools.app"}, {"Tools.app", "Tools.app"}},  // what the link names stays behind
      {{"latest", "Current"}, {"latest", "Tools.app"}},       // it comes along by its name
      {{"real/Again.app", "real/Slides.app"}, {"real/Slides.app", "real/Slides.app"}},
  };
  for (const auto& [items, sources] : cases) {
    app.sourceItems = items;
    const auto list = buildCopyList(job, paths::output);
    ASSERT_EQ(list.index(), 0U) << fmt::format("{}", fmt::join(items, ", "));
    Strings found;
    for (const AppCopyArr& item : std::get<0>(list)) found.push_back(item.itemPath.substr(paths::output.size() + 1));
    EXPECT_EQ(found, sources) << fmt::format("{}", fmt::join(items, ", "));
  }
}

TEST(CopyName, FollowsCatalogOrFoundItem) {
  const auto nameFor = [](std::size_t count, const char* item, const char* destinationName, const char* appPath) {
    CurrentApp app;
    app.destinationName = destinationName;
    app.appPath = appPath;
    return copyNameFor(app, count, item, "Some Folder/Found.app");
  };
  EXPECT_EQ(nameFor(1, "Foo.app", "", "/Applications/Bar.app/"), "Bar.app");
  EXPECT_EQ(nameFor(1, "Foo.app", "Baz.app", "/Applications/Bar.app"), "Baz.app");
  EXPECT_EQ(nameFor(1, "REGEX:Foo.*", "", "/Applications/Bar.app"), "Found.app");
  EXPECT_EQ(nameFor(1, "REGEX:Foo.*", "Baz.app", "/x"), "Baz.app");
  EXPECT_EQ(nameFor(1, "INSTALLERAPP:Foo", "", "/x"), "Found.app");
  EXPECT_EQ(nameFor(2, "Foo.app", "Baz.app", "/x"), "Found.app");
  EXPECT_EQ(nameFor(1, "Foo.app", "", ""), "");
}

}  // namespace
}  // namespace vorlu::test
