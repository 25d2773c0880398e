#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"

namespace vorlu::e2e {
namespace {

using Termination = SimulatedMacTest;

TEST_F(Termination, LeavesNothingBehindWhateverIsUnderWay) {
  const test::TemporaryFolder folder;
  EXPECT_EQ(runOnMachine({"truncate", "-s", "3G", folder / "/endless"}).status, 0);
  AppServer server([&](const auto& request, refserver::Response& response) {
    if (request.path == "/files/zip") response.status = 200, response.file = folder / "/endless";
  });
  SimulatedMac mac;
  mac.addApplication("Slides", "1.0", "com.example.Slides");
  const std::string app = server.make("Slides", "2.0");
  test::writeFile(app + "/Contents/Resources/large", std::string(60'000'000, 'x'));
  test::writeFile(folder / "/sleeper", "#!/bin/bash\n: >/tmp/installing\nsleep 60\n");
  mac.boot();
  const std::string inRun = fmt::format("mkdir -p '{0}'; cd '{0}'; ", paths::run);
  const struct {
    const char *type, *script, *moment;  // its script before the install; in zsh, whether the moment has come
  } cases[] = {
      {"zip", "", "[[ -n $(echo Downloads/.vorlu-download-*(NL+0)) ]]"},
      {"tbz", "", "[[ -s Output/Slides.app/Contents/Resources/large ]]"},
      {"dmg", "", "grep -q 'hdiutil attach' /var/log/tools.log"},
      {"dmg", ": >/tmp/installing; sleep 60", "[[ -e /tmp/installing ]]"},
      {"pkg", "", "[[ -e /tmp/installing ]]"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(fmt::format("{}: {}", c.type, c.moment));
    const std::string hash = server.pack(c.type, c.type, {"--preinstall", folder / "/sleeper", app});
    AppBlueprints entry = entryOf("Slides", "2.0", c.type, c.type, hash);
    entry.preInstallScript = c.script;
    server.setCatalog({entry});
    // the catalog's local copy would serve the entry before
    mac.shell(inRun + "rm -rf Downloads Output offlineData.json /tmp/installing; : >/var/log/tools.log");
    const Outcome end = mac.shell(inRun + "vorlu -u check >/dev/null & p=$!; until " + c.moment +
                                  "; do kill -0 $p || break; /.linux/bin/sleep 0.005; done; kill $p; wait $p");
    EXPECT_EQ(end.status, 143) << end.output;
    const char* lastLines = "/.linux/bin/tail -n 2 /var/log/Vorlu.log | grep -cE 'Allowing idle sleep|asked to stop'";
    EXPECT_EQ(mac.shell(lastLines).output, "2\n") << mac.read("/private/var/log/Vorlu.log");
    EXPECT_EQ(mac.shell("/.linux/bin/ps -eo args= | grep -E '[s]leep 60|[h]diutil|[b]sdtar|[i]nstaller'").output, "");
    EXPECT_EQ(mac.shell(inRun + "echo Downloads/.v*(N) Output/*(N) /Volumes/Slides*(N)").output, "\n");
    EXPECT_EQ(versionOf(mac.path("/Applications/Slides.app")), "1.0");
  }
}

}  // namespace
}  // namespace vorlu::e2e
