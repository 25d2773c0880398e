#include "vorlu/install/archive.h"

#include "tests/unit/install/install_run.h"

namespace vorlu::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Archive : public InstallRun {};
class ScriptedArchive : public InstallRun {
 protected:
  ScriptedArchive() : InstallRun(false) {}
};

TEST_F(Archive, RefusesMembersThatDoNotStayInside) {
  const Member good{"Slides.app/good", "good"};
  const struct {
    const char* what;
    std::vector<Member> members;
    bool refused;
  } cases[] = {
      {"up", {good, {"../evil", "x"}}, true},
      {"absolute", {{"/evil", "x"}, good}, true},
      {"link to a folder outside", {good, {"Slides.app/l", "", '2', "../.."}}, true},
      {"link past a deeper folder", {good, {"Slides.app/B/l", "", '2', "./../../../x"}}, true},
      {"pipe", {good, {"p", "", '6'}}, true},
      {"absolute link", {good, {"Slides.app/l", "", '2', "/private/etc"}}, true},
      {"link through a link", {good, {"l", "", '2', "."}, {"m", "", '2', "l/.."}}, true},
      {"file through a link", {good, {"l", "", '2', "Slides.app"}, {"l/x", "x"}}, true},
      {"link whose name holds the arrow", {good, {"a -> b", "", '2', "../../etc"}}, true},
      {"hard link", {good, {"h", "", '1', "../../runData.plist"}}, true},
      {"set-uid folder", {good, {"s/", "", '5', "", 04755}}, true},
      {"set-uid", {good, {"s", "x", '0', "", 04755}}, true},
      {"harmless ones",
       {good,
        {"./Slides.app/..dots", "x"},
        {"Slides.app/Versions/", "", '5', "", 02755},
        {"Slides.app/Versions/l", "", '2', "..//good"},
        {"h", "", '1', "Slides.app/good"},
        {"It's \"ü\" -> /x", "x"}},
       false},
  };
  const std::string file = paths::downloads + "/a.zip";
  for (const auto& c : cases) {
    mac.write(file, tarOf(c.members));
    mac.write(paths::output + "/before", "of another archive");
    messages();
    extractArchive(vorlu, file);
    const Lines lines = messages();
    if (c.refused) {
      EXPECT_THAT(*mac.files.list(paths::output), IsEmpty()) << c.what;
      ASSERT_EQ(lines.size(), 1U) << c.what;
      EXPECT_THAT(lines[0], HasSubstr("Error: Could not extract " + file + " - ")) << c.what;
    } else {
      EXPECT_THAT(lines, ::testing::ElementsAre("Extraction complete")) << c.what;
      EXPECT_TRUE(mac.exists(paths::output + "/Slides.app/good")) << c.what;
      EXPECT_FALSE(mac.exists(paths::output + "/before")) << c.what;
    }
    EXPECT_FALSE(mac.exists(paths::run + "/evil")) << c.what;
  }
}

TEST_F(Archive, DamagedOnesLeaveNothing) {
  const std::string file = paths::downloads + "/a.zip";
  std::string truncated = tarOf({{"a", "x"}, {"b", std::string(5000, 'y')}});
  truncated.resize(3000);
  for (const std::string& content : {std::string(), std::string("<html>Sign in</html>"), truncated}) {
    mac.write(file, content);
    extractArchive(vorlu, file);
    EXPECT_THAT(*mac.files.list(paths::output), IsEmpty()) << content.size();
  }
}

TEST_F(Archive, ItemsBehindLinksLieInsideOrNowhere) {
  mac.write("/top/a/b/item", "x");
  mac.write("/item", "outside");
  const std::pair<const char*, const char*> links[] = {{"a/same", "b"},       {"a/b/up", "../.."}, {"out", ".."},
                                                       {"absolute", "/top"},  {"loop", "loop"},    {"dangling", "a/c"},
                                                       {"far", "a/b/up/out"}, {"l", "./a//same/"}};
  for (const auto& [name, target] : links) std::filesystem::create_symlink(target, mac.root() + "/top/" + name);
  const std::pair<const char*, const char*> cases[] = {{"a/b/item", "a/b/item"},
                                                       {"a/same/item", "a/b/item"},
                                                       {"l/up/l/item", "a/b/item"},
                                                       {"a/../a/b", "a/b"},
                                                       {"out/item", ""},
                                                       {"absolute/a", ""},
                                                       {"loop/item", ""},
                                                       {"dangling", ""},
                                                       {"far/item", ""},
                                                       {"../top/a", ""},
                                                       {"a/same/../../../item", ""},
                                                       {"/a", ""},
                                                       {"a/b/item/..", "a/b"},
                                                       {"", ""},
                                                       {"a/none", ""}};
  for (const auto& [item, place] : cases) EXPECT_EQ(placeInside(mac.files, "/top", item).value_or(""), place) << item;
}

TEST_F(ScriptedArchive, StatusOfTheToolDecidesUnlessOnlyOwnersAreLost) {
  const std::string failed = "Error: Could not extract /a.zip - ";
  const std::string owners = "a: Can't set user=501/group=20 for a\n";
  const std::pair<Answer, std::string> cases[] = {
      {{.output = owners + "\ntar: Error exit delayed from previous errors.\n", .status = 1}, "Extraction complete"},
      {{.output = owners + "b: ZIP bad CRC: 0x1\n", .status = 1}, failed + "b: ZIP bad CRC: 0x1"},
      {{.output = "", .status = 1}, failed + "it could not be unpacked to its end"},
      {{.output = "", .timedOut = true}, failed + "it could not be unpacked to its end"},
  };
  for (const auto& [answer, line] : cases) mac.processes.onPrefix("/usr/bin/tar -xf", answer);
  for (const auto& [answer, line] : cases) {
    extractArchive(vorlu, "/a.zip");
    EXPECT_EQ(messages().back(), line);
  }
}

TEST_F(Archive, NestedOnesLandBesideThemselves) {
  mac.write(paths::output + "/inner.zip", tarOf({{"Slides.app/good", "good"}}));
  EXPECT_TRUE(extractNestedArchive(vorlu, "inner.zip", false));
  EXPECT_THAT(*mac.files.list(paths::output), ::testing::ElementsAre("Slides.app", "inner.zip"));
  for (const std::string item : {"../runData.plist", "/a.zip", "a/../../b", "missing.zip"}) {
    mac.write(paths::output + "/inner.zip", "");
    EXPECT_FALSE(extractNestedArchive(vorlu, item, false)) << item;
    EXPECT_THAT(*mac.files.list(paths::output), IsEmpty()) << item;
  }
}

}  // namespace
}  // namespace vorlu::test
