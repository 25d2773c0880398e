#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <random>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "tests/support/temporary_folder.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/run_data.h"
#include "vorlu/state/stale_files.h"

namespace vorlu::e2e {
namespace {

namespace fs = std::filesystem;
using test::readFile;

/// Gives a bundle some size.
void fill(const std::string& bundle, const std::string& version, int files) {
  for (int file = 0; file < files; ++file)
    test::writeFile(fmt::format("{}/Contents/Resources/{}", bundle, file), version + std::string(20000, 'x'));
}

/// Serves a zip of an app and returns its hash.
std::string offer(AppServer& server, const std::string& name, int extraFiles = 0) {
  const std::string bundle = server.make(name, "2.0");
  fill(bundle, "2.0", extraFiles);
  return server.pack("zip", name + ".zip", {bundle});
}

AppBlueprints entry(const std::string& name, const std::string& hash) {
  return entryOf(name, "2.0", "zip", name + ".zip", hash);
}

struct UpdateCheck : SimulatedMacTest {};

TEST_F(UpdateCheck, UpdatesWhatIsDueAndTouchesNothingElse) {
  AppServer server;
  SimulatedMac mac;
  const char* names[] = {"Slides", "Notes Pro", "Draw", "Mailbox", "Chess"};
  for (const char* name : names)
    mac.addApplication(name, std::string(name) == "Mailbox" ? "2.0" : "1.0", fmt::format("com.example.{}", name));
  std::vector<AppBlueprints> catalog;
  for (const char* name : names) {
    const std::string hash = offer(server, name);
    catalog.push_back(entry(name, std::string(name) == "Slides" ? "" : hash));
  }
  catalog[2].universalInstallerHash = std::string(64, '0');
  server.setCatalog(catalog);
  mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
            R"(<plist version="1.0"><dict><key>GeneralOptions</key><dict>
                 <key>excludedAppUpdates</key><array><string>Chess-id</string></array></dict></dict></plist>)");
  mac.boot();
  ASSERT_EQ(mac.run({"/usr/bin/open", "-a", "/Applications/Notes Pro.app"}).status, 0);

  const auto machine = [] {
    return runOnMachine({"/usr/bin/find", "/etc", "/usr/local", "/opt", "/srv", "/var/tmp", "-printf", "%p %T@ %s\n"});
  };
  const Outcome untouched = machine();
  const Outcome first = mac.run({"/usr/local/bin/vorlu", "--update", "check"});
  EXPECT_EQ(first.status, 0) << first.output;
  for (const auto& [app, version] :
       {std::pair("Slides", "2.0"), {"Notes Pro", "1.0"}, {"Draw", "1.0"}, {"Mailbox", "2.0"}, {"Chess", "1.0"}})
    EXPECT_EQ(versionOf(mac.path(fmt::format("/Applications/{}.app", app))), version) << app;
  EXPECT_THAT(namesIn(mac.path(paths::downloads)), testing::ElementsAre("NotesPro-v2.0.zip"));
  EXPECT_TRUE(fs::is_empty(mac.path(paths::output)));

  for (const char* path : {"/Library/Application Support/MOSK", "/var/log/Vorlu.log", "/Applications/Slides.app"})
    EXPECT_FALSE(fs::exists(path)) << path;
  EXPECT_EQ(machine().output, untouched.output);

  const std::size_t before = mac.read("/private/var/log/Vorlu.log").size();
  const Outcome second = mac.run({"/usr/local/bin/vorlu", "--update", "check"});
  EXPECT_EQ(second.status, 0) << second.output;
  const std::string log = mac.read("/private/var/log/Vorlu.log").substr(before);
  EXPECT_THAT(log, testing::HasSubstr(": Updates required: Notes Pro v2.0, Draw v2.0.\n"));
  EXPECT_THAT(log, testing::HasSubstr(": Notes Pro update found in the local download cache. Skipping download\n"));
  EXPECT_THAT(log, testing::Not(testing::AnyOf(testing::HasSubstr("Slides"), testing::HasSubstr("Chess"))));
  EXPECT_THAT(log, testing::EndsWith(": Exiting...\n"));
  for (const std::string& call : mac.toolCalls()) EXPECT_EQ(call.find("installer"), std::string::npos) << call;
}

TEST_F(UpdateCheck, CommandLineAsAnotherUserAndAsRoot) {
  AppServer server;
  server.setCatalog({entry("Slides", "")});
  SimulatedMac mac;
  mac.boot();
  const auto expectAnswer = [&](const char* user, const char* line, int status, const std::string& end) {
    const Outcome outcome = mac.shell(line, user);
    EXPECT_EQ(outcome.status, status) << user << ": " << line << "\n" << outcome.output;
    EXPECT_THAT(outcome.output, testing::EndsWith(end)) << user << ": " << line;
  };
  expectAnswer("alice", "vorlu -u check", 0,
               "Error: Permission denied.\nVorlu must be run as root to perform App updates.\n");
  EXPECT_FALSE(fs::exists(mac.path("/private/var/log/Vorlu.log")));
  expectAnswer("root", "vorlu -c Slides-id", 0, "Slides was found in the Vorlu catalog.\n");
  expectAnswer("root", "vorlu -c Slides-legacy", 0,
               "Slides was found in the Vorlu catalog, but is the legacy App installation format. The current format "
               "is Slides-id\n");
  expectAnswer("root", "vorlu -c bogus", 0,
               "Error: An App with the identifier \"bogus\" was not found in the Vorlu App catalog.\nFor valid App "
               "identifiers, please refer to the App catalog\n");
  expectAnswer("root", "vorlu -dk", 0, "Exiting...\n");
}

/// The version that every part of a bundle has, or what is mixed.
std::string wholeVersion(const std::string& bundle) {
  const std::string version = versionOf(bundle);
  for (int file = 0; file < 200; ++file) {
    const std::string text = readFile(fmt::format("{}/Contents/Resources/{}", bundle, file));
    if (text.size() != 20003 || !text.starts_with(version)) return "mixed at " + std::to_string(file);
  }
  return version;
}

/// As if the killed runs lay two days back: a file under way stays for a day, since it may be another agent's.
void age(const std::string& folder) {
  for (const auto& item : fs::directory_iterator(folder))
    if (isUnderWay(item.path().filename())) fs::last_write_time(item, item.last_write_time() - std::chrono::hours(48));
}

TEST_F(UpdateCheck, LosesNothingWhenKilledAtAnyMoment) {
  AppServer server;
  server.setCatalog({entry("Slides", offer(server, "Slides", 200))});
  SimulatedMac mac;
  mac.addApplication("Slides", "1.0", "com.example.slides");
  const std::string bundle = mac.path("/Applications/Slides.app");
  fill(bundle, "1.0", 200);
  const std::string original = mac.path("/private/var/original.app");
  fs::copy(bundle, original, fs::copy_options::recursive);
  mac.boot();
  const auto reset = [&] {
    fs::remove_all(bundle);
    fs::copy(original, bundle, fs::copy_options::recursive);
  };

  // one whole run tells how long the moments may lie apart
  ASSERT_EQ(mac.shell("vorlu -u check").status, 0);
  reset();
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(mac.shell("vorlu -u check").status, 0);
  const double length = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  ASSERT_EQ(wholeVersion(bundle), "2.0");

  std::mt19937 random(20260301);
  std::uniform_real_distribution<double> moment(0, length);
  for (int kill = 0; kill < 25; ++kill) {
    reset();
    const double after = moment(random);
    mac.shell(
        fmt::format("vorlu -u check >/dev/null & p=$!; /.linux/bin/sleep {:.4f}; kill -9 $p 2>/dev/null; wait", after));
    const std::string when = fmt::format("killed after {:.4f} s", after);
    const auto runData = decodePropertyList<RunDataFile>(readFile(mac.path(paths::runData)));
    EXPECT_TRUE(runData.ok()) << when;
    const auto copy = decodeJson<std::vector<AppBlueprints>>(readFile(mac.path(paths::offlineData)));
    EXPECT_TRUE(copy.ok() && copy->size() == 1) << when;
    EXPECT_THAT(wholeVersion(bundle), testing::AnyOf("1.0", "2.0")) << when;
    if (kill % 5 != 4) continue;
    age(mac.path(paths::downloads));
    EXPECT_EQ(mac.shell("vorlu -u check").status, 0) << when;
    EXPECT_EQ(wholeVersion(bundle), "2.0") << when;
    EXPECT_THAT(namesIn(mac.path("/Applications")), testing::ElementsAre("Slides.app")) << when;
    EXPECT_THAT(namesIn(mac.path(paths::output)), testing::IsEmpty()) << when;
    EXPECT_THAT(namesIn(mac.path(paths::downloads)), testing::IsEmpty()) << when;
  }
}

}  // namespace
}  // namespace vorlu::e2e
