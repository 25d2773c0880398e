#include <fmt/format.h>

#include <set>

#include "bench/fleet/fleet_agent.h"
#include "refserver/sample_data.h"
#include "tests/unit/server/server_fixture.h"
#include "vorlu/cli/recurring_run.h"
#include "vorlu/state/encoding.h"

namespace vorlu::test {
namespace {

const char* const requestTexts[] = {"HEAD /connectivity",    "GET /timestamp", "GET /secrets",
                                    "GET /catalog/live",     "GET /manifest",  "GET /files/icon",
                                    "GET /files/Slides.zip", "POST /reports"};
const char* const profileKeys = R"(<key>GeneralOptions</key><dict><key>publicKey</key><string>{}</string></dict>
    <key>ScheduledUpdates</key><dict><key>runFrequency</key><dict><key>runType</key><string>specifyPatchDay</string>
    <key>patchDay</key><integer>2</integer><key>patchDayFrequency</key><string>recurringPromptMode</string></dict>
    <key>deferralConfiguration</key><dict><key>deferralOption</key><string>disableDeferralLimit</string></dict></dict>)";
const char* const catalog = R"([{{"appName": "Slides", "appIdentifier": "slides", "latestVersion": "{0}",
    "latestVersionMethod": "CFBundleShortVersionString", "appType": "appBundle", "architecture": "Universal",
    "downloadFileType": "zip", "universalDownloadURL": "{1}/files/Slides.zip", "localIcon": "{2}",
    "cloudIcon": "{1}/files/icon", "appPath": "/Applications/Slides.app"}}])";

/// A Mac on its patch day, whose one app is open all the time and whose user defers whenever he is asked.
struct FleetDay : ServerFixture {
  FleetDay() {
    for (const std::string& path : {paths::dialogProgram, paths::promptComponentReceipt}) mac.write(path, "component");
    mac.addApplication("/Applications/Slides.app", "com.example.slides", "1.0");
    mac.applications.running = {"com.example.slides"};
    for (const char* line : {"/", "zsh: "}) mac.processes.onPrefix(line, {});
    mac.processes.onPrefix("zsh: \"" + paths::dialogProgram, {.output = "2\n"});
    std::filesystem::remove(serverFolder / "/inventory.json");
    EXPECT_TRUE(refserver::makeSampleData(serverFolder.path(), base));
    for (const char* file : {"files/icon", "files/Slides.zip"}) serve(file, "content");
    publish("1.0", "");
    mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
              plistOf(fmt::format(fmt::runtime(profileKeys), base64Encode(agentKeys().agent.publicDer()))));
  }
  void publish(const std::string& version, const std::string& icon) {
    serve("catalog.json", fmt::format(fmt::runtime(catalog), version, base, icon));
  }
};

TEST_F(FleetDay, TheModelAsksForWhatTheAgentAsksFor) {
  const auto start = static_cast<std::int64_t>(mac.clock.now()) - 5 * 3600;  // Monday, 07:00
  const std::int64_t published = start + 5 * 900, keysChanged = start + 40 * 900;
  const fleet::ServerHistory history{{{published, 1, 1, 100, true}}, {1, keysChanged}};
  fleet::FleetProfile profile;
  profile.runFrequency = {.runType = "specifyPatchDay", .patchDay = 2, .patchDayFrequency = "recurringPromptMode"};
  fleet::FleetClock clock(0);
  const auto drawn = [&] {  // by the agent, if it stamped at the moment at which the model does
    const std::int64_t seconds = runData().NextUpdateAttempt.value_or(0) - clock.time() - 63 * 60;
    EXPECT_EQ(seconds % 60, 0) << "at " << clock.time() - start << " s";
    return seconds / 60;
  };
  fleet::FleetAgent model(profile, history, {drawn, [](double) { return true; }, [] { return true; }});
  model.measuring = model.answering = 0;
  std::set<std::string> seen;
  for (std::int64_t tick = start; tick < start + 30 * 3600; tick += 900) {
    if (tick == published) publish("2.0", "slides.png");
    if (tick == keysChanged) serve("timestamp.json", fmt::format(R"({{"timestamp": {}}})", keysChanged));
    mac.clock.set(static_cast<double>(tick));
    EXPECT_EQ(endOf([&, &run = newRun()] { recurringRun(run); }), 0);
    Lines asked, modelled;
    for (const std::string& line : requests()) asked.push_back(line.substr(0, line.rfind(' ')));
    clock.set(tick);
    model.recurringRun(clock, [&](std::int64_t, fleet::Role role, const fleet::Publication*) {
      modelled.emplace_back(requestTexts[static_cast<std::size_t>(role)]);
    });
    ASSERT_EQ(asked, modelled) << "in run " << (tick - start) / 900;
    seen.insert(asked.begin(), asked.end());
  }
  EXPECT_EQ(seen.size(), fleet::roleCount) << "every role was asked for";
}

}  // namespace
}  // namespace vorlu::test
