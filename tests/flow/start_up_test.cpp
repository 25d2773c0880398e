#include <fmt/format.h>

#include "tests/unit/server/server_fixture.h"
#include "vorlu/cli/initialise_run.h"
#include "vorlu/server/key_material.h"

namespace vorlu::test {
namespace {

const Lines keysObtained =
    joined({"Keychain data required for Vorlu initialisation was not found. Obtaining data..."}, keysAdded);
struct StartUpTest : ServerFixture {
  using ServerFixture::mac;

  StartUpTest() {
    for (const std::string& path : {paths::dialogProgram, paths::promptComponentReceipt}) mac.write(path, "component");
    mac.makeFolder(paths::run);
    RunDataFile file;
    file.SecretsTimestamp = 5;  // newer than the sample server's
    setRunData(file);
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.status = 1, .effect = [this](const Command&) { onSearch(); }});
    mac.processes.on(ps + "command=", {});
    mac.processes.on(ps + "ppid= -o user= -o etime= -o comm=",
                     {.output = "4000 3999 root 00:01 vorlu\n4711 1 root 02:00 /usr/local/bin/vorlu\n"});
  }
  std::optional<int> start(StartUp startUp = {}) {
    return endOf([&] { initialiseRun(*run, startUp); });
  }
  void fresh() {
    run = &newRun();
    run->modes.updateMode = true;
  }
  void freshWithKeys() {
    newRunWithKeys();
    fresh();
  }
  Vorlu* run = nullptr;
  std::function<void()> onSearch = [] {};
  const std::string ps = "/bin/ps -Aww -o pid= -o ";
};

TEST_F(StartUpTest, FetchesKeyMaterialOnceAndIsQuietAfterwards) {
  fresh();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(logged(), keysObtained);
  EXPECT_EQ(runData().SecretsTimestamp, static_cast<std::int64_t>(mac.clock.now()));
  EXPECT_EQ(run->modes.runStage, "Updates");
  EXPECT_TRUE(mac.files.isDirectory(paths::downloads) && mac.files.isDirectory(paths::output));
  fresh();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(StartUpTest, WithoutInternet) {
  answer("/connectivity", 503, "");
  freshWithKeys();
  EXPECT_EQ(start({.offlineTolerated = true}), std::nullopt);
  EXPECT_EQ(logged(),
            Lines{"Warning: No internet connection was detected. Any updates already cached will be installed "
                  "but no new updates will be downloaded"});
  EXPECT_EQ(runData().CurrentRunType.value_or("N/A"), "N/A");
}

TEST_F(StartUpTest, StopsWhereItCannotGoOn) {
  mac.processes.onPrefix("zsh: \"/usr/local/bin/vorlu-ui", {});
  const auto losing = [this](const std::string& path) {
    onSearch = [this, path] { mac.files.remove(path), mac.files.failWritesFrom(1); };
  };
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"001", [&] { serve("timestamp.json", R"({"timestamp": 1700000000})"), answer("/secrets", 500, ""); }},
      {"002", [&] { deleteKeychainItems(*run), answer("/secrets", 500, ""); }},
      {"004", [&] { mac.device.system = "10.15.7"; }},
      {"005", [&] { answer("/connectivity", 503, ""); }},
      {"010", [&] { mac.files.remove(paths::promptComponentReceipt); }},
      {"010", [&] { losing(paths::run); }},
      {"010", [&] { losing(paths::runData); }},
      {"003", [&] { mac.processes.on(ps + "command=", {.status = 1}); }},
  };
  for (const auto& [code, arrange] : cases) {
    freshWithKeys();
    arrange();
    if (code == std::string("003")) mac.processes.run(commandOf("/bin/ps", {"-Aww", "-o", "pid=", "-o", "command="}));
    mac.processes.takeCommands();
    EXPECT_EQ(start({.showProgress = true}), 1) << code;
    EXPECT_THAT(mac.processes.takeCommands(),
                testing::Contains(testing::HasSubstr(fmt::format("Error Code: ({})\"", code))));
    EXPECT_THAT(logged(), testing::Contains("Exiting..."));
    onSearch = [] {};
    mac.files.heal();
    const auto file = loadRunData(mac.files);
    EXPECT_TRUE(!file || file->CurrentRunType.value_or("N/A") == "N/A") << code;
    onRequest = nullptr;
    mac.device.system = "14.5.0";
    serve("timestamp.json", R"({"timestamp": 1})");
    mac.write(paths::promptComponentReceipt, "component");
  }
}

TEST_F(StartUpTest, SetsCorruptRunDataAside) {
  // a wrong type alone doesn't keep other keys from being changed first
  const std::pair<std::string, const char*> cases[] = {
      {"garbage", "garbage"}, {plistOf("<key>LastRun</key><string>x</string>"), "<string>x</string>"}};
  for (const auto& [content, kept] : cases) {
    freshWithKeys();
    mac.write(paths::runData, content);
    EXPECT_EQ(start(), std::nullopt);
    EXPECT_THAT(mac.read(paths::runData + ".corrupt"), testing::HasSubstr(kept));
    EXPECT_EQ(runData().CurrentRunType, "N/A");
    EXPECT_THAT(
        logged(),
        testing::Contains(testing::StartsWith("Warning: The run data plist could not be decoded and was moved to ")));
  }
}

TEST_F(StartUpTest, ClearsWhatKilledRunsHaveLeft) {
  mac.write(paths::run + "/placement-777", "/Applications");
  mac.write("/Applications/.~_--_----__/old/Slides.app/file", "old");
  mac.write(paths::run + "/images-777", "/a b.dmg\n/gone.dmg\n");
  for (const char* kind : {"placement", "images", "prompt"}) mac.write(paths::run + "/" + kind + "--7", "/of nobody");
  mac.write("/a b.dmg", "image");
  mac.write(paths::run + "/.vorlu-0123456789abcdef", "half a file");
  std::filesystem::last_write_time(mac.root() + paths::run + "/.vorlu-0123456789abcdef",
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(10'000));
  mac.processes.on("/usr/bin/hdiutil attach -nobrowse '/a b.dmg'", {.output = "/dev/disk4\t/Volumes/A\n"});
  mac.processes.on("/usr/bin/hdiutil detach /Volumes/A", {});
  mac.write(paths::run + "/prompt-777", "");
  mac.processes.on("zsh: killall Dialog", {});
  freshWithKeys();
  mac.processes.takeCommands();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(mac.read("/Applications/Slides.app/file"), "old");
  const Lines commands = mac.processes.takeCommands();
  for (const char* line : {"/usr/bin/hdiutil detach /Volumes/A", "zsh: killall Dialog"})
    EXPECT_THAT(commands, testing::Contains(line));
  EXPECT_THAT(*mac.files.list(paths::run),
              testing::ElementsAre("Downloads", "Output", "images--7", "placement--7", "prompt--7", "runData.plist"));
}

TEST_F(StartUpTest, VolumeThatRefusesIsTriedAgainByTheNextRun) {
  const std::string note = paths::run + "/images-777";
  mac.write(note, "/a.dmg\n/broken.dmg\n/Volumes/B\n/Volumes/C\n/two lines.dmg\n");
  for (const char* item :
       {"/a.dmg", "/broken.dmg", "/two lines.dmg", "/Volumes/A/x", "/Volumes/B/x", "/Volumes/C/x", "/Volumes/C\nx/y"})
    mac.write(item, "x");
  mac.processes.on("/usr/bin/hdiutil attach -nobrowse /a.dmg", {.output = "/dev/disk4\t/Volumes/A\n"});
  mac.processes.on("/usr/bin/hdiutil attach -nobrowse /broken.dmg", {.output = "attach failed", .status = 1});
  mac.processes.on("/usr/bin/hdiutil attach -nobrowse '/two lines.dmg'", {.output = "/dev/disk5\t/Volumes/C\nx\n"});
  for (const char* busy : {"/Volumes/A", "/Volumes/B", "'/Volumes/C\nx'"})
    for (const int status : {1, 0})
      mac.processes.on(fmt::format("/usr/bin/hdiutil detach {}", busy), {.status = status});
  mac.processes.on("/usr/bin/hdiutil detach /Volumes/C", {});
  freshWithKeys();
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_EQ(mac.read(note), "/Volumes/A\n/Volumes/B\n/two lines.dmg\n");
  EXPECT_EQ(start(), std::nullopt);
  EXPECT_FALSE(mac.exists(note));
}

TEST_F(StartUpTest, RemovesWhatOlderVersionsLeftAndNothingElse) {
  const Lines old = {"/private/var/tmp/com.mosk.vorlu.UI.log", "/Library/Application Support/MOSK/Bin/moskupdate",
                     "/private/etc/paths.d/unused", "/usr/local/unused/unused", "/usr/local/bin/unused"};
  const Lines others = {"/usr/local/bin/other", "/Library/Application Support/MOSK/Other/x"};
  for (const auto& path : joined(old, others)) mac.write(path, "x");
  freshWithKeys();
  EXPECT_EQ(start(), std::nullopt);
  for (const auto& path : old) EXPECT_FALSE(mac.exists(path)) << path;
  for (const auto& path : others) EXPECT_TRUE(mac.exists(path)) << path;
}

}  // namespace
}  // namespace vorlu::test
