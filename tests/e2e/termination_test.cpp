#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"

namespace vorlu::e2e {
namespace {

namespace fs = std::filesystem;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::Not;

using Termination = SimulatedMacTest;

TEST_F(Termination, LeavesNothingBehindWhateverIsUnderWay) {
  const test::TemporaryFolder big;
  test::writeFile(big / "/endless", "");
  fs::resize_file(big / "/endless", 3'000'000'000);
  AppServer server([&](const refserver::Request& request, refserver::Response& response) {
    if (request.path != "/files/endless") return;
    response.status = 200;
    response.file = big / "/endless";
  });
  SimulatedMac mac;
  mac.addApplication("Slides", "1.0", "com.example.Slides");
  const std::string app = server.make("Slides", "2.0");
  test::writeFile(app + "/Contents/Resources/large", std::string(60'000'000, 'x'));
  test::writeFile(big / "/sleeper", "#!/bin/bash\n: >/tmp/installing\nsleep 60\n");
  fs::permissions(big / "/sleeper", fs::perms::owner_all);
  mac.boot();
  const std::string inRun = fmt::format("mkdir -p '{0}'; cd '{0}'; ", paths::run);
  const auto volumes = namesIn(mac.path("/Volumes"));
  const std::string sleeping = "[[ -e /tmp/installing ]]";
  const auto calls = [](const char* tool) { return fmt::format("grep -q '{}' /var/log/tools.log", tool); };
  const struct {
    const char* type;
    const char* file;
    const char* script;  ///< before the install
    std::string moment;  ///< zsh: whether it has come
  } cases[] = {
      {"zip", "endless", "", "[[ -n $(echo Downloads/.vorlu-download-*(NL+0)) ]]"},
      {"tbz", "tbz", "", "[[ -s Output/Slides.app/Contents/Resources/large ]]"},
      {"dmg", "dmg", "", calls("hdiutil attach")},
      {"dmg", "dmg", ": >/tmp/installing; sleep 60", sleeping},
      {"dmgWithEULA", "dmgWithEULA", "", calls("hdiutil convert")},
      {"dmgInZIP", "dmgInZIP", "", calls("hdiutil attach")},
      {"pkg", "pkg", "", sleeping},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(fmt::format("{}: {}", c.type, c.moment));
    const std::vector<std::string> contents = {"--preinstall", big / "/sleeper", app};
    const bool package = c.type == std::string_view("pkg");
    AppBlueprints entry = entryOf("Slides", "2.0", c.type, c.file,
                                  server.pack(c.type, c.type, {contents.begin() + (package ? 0 : 2), contents.end()}));
    entry.preInstallScript = c.script;
    entry.nestedDownloadFiles = {"REGEX:[.]dmg$"};
    server.setCatalog({entry});
    // the catalog's local copy would serve the entry before
    mac.shell(inRun + "rm -rf Downloads Output offlineData.json /tmp/installing; : >/var/log/tools.log");
    const Outcome end = mac.shell(inRun + "vorlu -u check >/dev/null & p=$!; until " + c.moment +
                                  "; do kill -0 $p || break; /.linux/bin/sleep 0.005; done; kill $p; wait $p");
    EXPECT_EQ(end.status, 143) << end.output;
    EXPECT_THAT(mac.read("/private/var/log/Vorlu.log"),
                ContainsRegex("Allowing idle sleep[.]{3}\n[^\n]*: Vorlu was asked to stop[.] Exiting[.]{3}\n$"));
    EXPECT_THAT(mac.run({"/.linux/bin/ps", "-eo", "args="}).output,
                Not(ContainsRegex("sleep 60|hdiutil|bsdtar|installer|vorlu")));
    EXPECT_EQ(mac.shell(inRun + "echo Downloads/.v*(N) Output/*(N)").output, "\n");
    EXPECT_EQ(namesIn(mac.path("/Volumes")), volumes);
    EXPECT_EQ(versionOf(mac.path("/Applications/Slides.app")), "1.0");
  }
  EXPECT_THAT(namesIn(mac.path("/Applications")), ElementsAre("Slides.app"));
}

}  // namespace
}  // namespace vorlu::e2e
