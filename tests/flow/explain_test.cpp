#include "ctl/explain_app.h"

#include <sstream>

#include "ctl/agent_status.h"
#include "ctl/timeline.h"
#include "tests/flow/prompted_run.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/policy/forced_update_flow.h"
#include "vorlu/policy/scheduled_update_flow.h"
#include "vorlu/policy/update_check_flow.h"
#include "vorlu/state/forced_receipt.h"

namespace vorlu::test {
namespace {

using ctl::Explanation;
using ::testing::HasSubstr;

Strings parts(const std::string& text, char separator) {
  Strings list;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) list.push_back(trimmed(part));
  return list;
}

#include "tests/flow/explain_situations.inc"

class Explained : public PromptedRun, public testing::WithParamInterface<std::string> {
 protected:
  Explained() { mac.processes.on("zsh: print skip", {.output = "skip"}); }

  bool is(const std::string& word) const { return special_.contains(word); }
  static std::string dict(const std::string& key, const std::string& keys) {
    return fmt::format("<key>{}</key><dict>{}</dict>", key, keys);
  }
  void writePreferences() {
    std::map<std::string, std::map<std::string, std::string>> sections;
    for (const std::string& line : parts(trimmed(profileKeys), '\n')) {
      const Strings row = parts(line, '|');
      if (is(row[0])) sections[row[1]][row[2]] += row[3];
    }
    std::string profile;
    for (const auto& [section, groups] : sections) {
      std::string keys;
      for (const auto& [group, inside] : groups) keys += group.empty() ? inside : dict(group, inside);
      profile += dict(section, keys);
    }
    mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist", plistOf(profile));
  }
  void writeState() {
    const auto now = static_cast<std::int64_t>(mac.clock.now());
    RunDataFile file;
    file.CurrentRunType = "N/A";
    file.DeferCount = is("noneLeft") ? "0" : is("disabled") ? "N/A" : "2";
    file.LastRun = is("deferred")          ? now - 1800
                   : is("deferredLongAgo") ? now - 7200
                   : is("missed")          ? now - 8 * 86400
                                           : 0;
    file.UserDeferred = is("deferred") || is("deferredLongAgo");
    file.NextUpdateAttempt = is("checked") ? now + 60 : 0;
    store(file);
    const std::string often = is("forcedOften") ? fmt::format("<key>lastRun</key><integer>{}</integer>", now - 60) : "";
    if (is("forced"))
      mac.write(forcedReceiptPath("server.Slides"), plistOf(fmt::format("<key>deferrals</key><string>{}</string>{}",
                                                                        is("forcedNone") ? "N/A" : "2", often)));
  }
  void changeEntry() {
    AppBlueprints& entry = vorlu.catalog.entries[0];
    if (is("whileRunning")) entry.updateWhileRunning = true;
    if (is("blockedBy")) entry.blockingApps = Strings{"Slides"}, entry.appType = "pkg";
    if (is("current")) entry.latestVersion = "1.0";
    if (is("catalogSaysNo")) entry.updatesAllowed = false;
    if (is("noBuild")) entry.architecture = "arch", entry.appleSiliconDownloadURL = "";
    if (is("noURL")) entry.architecture = "Arch";
    if (is("noVersion")) entry.latestVersion.reset();
    if (is("skip") || is("script"))
      entry.latestVersionMethod = "shellCommand", entry.latestVersionScript = "print skip";
    if (is("macOSTooOld")) entry.minimumOS = "15";
    if (is("macOSTooNew")) entry.maximumOS = "13.9";
    if (is("diskFull")) entry.installedSize = 300'000'000;
    if (is("oddType")) entry.downloadFileType = "rar";
  }
  void arrange(const std::string& words) {
    for (const std::string& word : parts(words, ' ')) special_.insert(word);
    addApp("Slides", is("open"));
    changeEntry();
    mac.write(paths::offlineData, encodeJson(vorlu.catalog.entries, JsonLayout::compact));
    if (is("missing")) mac.files.remove(pathOf("Slides"));
    if (is("nobody")) mac.consoleUser.user = "loginwindow";
    if (is("camera")) mac.cameras.cameras = {{35, true}};
    writePreferences();
    writeState();
  }

  /// Everything on the Mac, with its changes.
  std::string traces() {
    std::string all;
    const auto items = mac.files.enumerate("/");
    for (const TreeItem& item : *items) {
      const auto info = mac.files.info("/" + item.relativePath);
      all += fmt::format("{} {} {}\n", item.relativePath, info ? info->size : 0, info ? info->modified : 0);
    }
    return all;
  }
  /// The steps of a recurring run, as it takes them. What the user saw, and the version that is left.
  std::string run() {
    willAnswer(is("noneLeft") || is("disabled") || is("newMode") || is("forcedNone") ? "0" : "2");
    endOf([&] {
      forcedUpdateFlow(vorlu);
      const GeneralOptionPrefs& prefs = vorlu.preferences.general();
      if (prefs.hourlyCheck && vorlu.runData.kept(&RunDataFile::NextUpdateAttempt) < vorlu.runData.now)
        updateCheckFlow(vorlu, true);
      if (prefs.updatePrompts) scheduledUpdateFlow(vorlu, "run");
    });
    const std::string prompts = seen();
    const std::string outcome = prompts.starts_with("initial") ? prompts : prompts.starts_with("grace") ? "grace" : "";
    const std::string version = mac.exists(pathOf("Slides")) ? installedVersion("Slides") : "gone";
    return outcome.empty() ? version : outcome + " " + version;
  }

 private:
  std::set<std::string> special_{"always"};
};

TEST_P(Explained, AsTheRunThenActs) {
  const Strings row = parts(GetParam(), '|');
  arrange(row[0]);
  const std::string before = traces();
  const auto told = ctl::explainApp(mac.platform(), site, is("otherName") ? "slides" : "server.Slides", is("skip"));
  EXPECT_EQ(traces(), before);
  ASSERT_TRUE(told) << told.error();
  const std::string all = ctl::toText(*told);
  EXPECT_EQ(nameOf(told->fate), row[1]) << all;
  EXPECT_EQ(told->decidedBy.has_value(), !row[2].empty()) << all;
  EXPECT_THAT(told->decidedBy.value_or(""), HasSubstr(row[2])) << all;
  vorlu.runData.now = static_cast<std::int64_t>(mac.clock.now());
  EXPECT_EQ(run(), row[3]) << all;
}

INSTANTIATE_TEST_SUITE_P(Situations, Explained, testing::ValuesIn(parts(trimmed(situations), '\n')));

/// March 2026, in which the Mac is on from 9 to 11, a run each quarter of an hour, with Slides always open: keys of
/// `ScheduledUpdates` and the user's answers, who takes a minute for each.
using Month = std::pair<std::string, std::string>;

struct Rehearsed : PromptedRun, testing::WithParamInterface<Month> {
  static constexpr Seconds start = VirtualClock::defaultStart - 3 * 3600;

  void begin() {
    setPreferences("ScheduledUpdates", GetParam().first +
                                           "<key>updateProgressPrompt</key><string>noPrompt</string>"
                                           "<key>displayCompletePrompt</key><false/>");
    addApp("Slides");
    answerTime = 60;
    mac.clock.set(start);
    for (const std::string& word : parts(GetParam().second, ' ')) willAnswer(codes.at(word));
  }
  void release(int number) {
    AppBlueprints& app = vorlu.catalog.entries[0];
    mac.addApplication(pathOf("Slides"), "com.example.Slides", installedVersion("Slides"));
    app.latestVersion = fmt::format("{}.0", number);
    serve(app, appArchive("Slides.app", *app.latestVersion));
    mac.write(paths::offlineData, encodeJson(vorlu.catalog.entries, JsonLayout::compact));
  }
  /// What `explain` says before the run comes true, and no earlier forecast is missed.
  void oneRun() {
    if (!running.contains("Slides")) open("Slides");
    const auto told = *ctl::explainApp(mac.platform(), site, "Slides", false);
    const bool asks = told.fate == ctl::Fate::prompt || told.fate == ctl::Fate::gracePrompt;
    const std::string when = *ctl::momentStamp(mac.clock, static_cast<std::int64_t>(mac.clock.now()));
    EXPECT_EQ(asks, forecast.empty() ? asks : forecast <= when) << when;
    forecast = told.fate == ctl::Fate::waits ? told.nextPrompt.value_or("never") : "";
    Vorlu run(mac.platform(), site);
    run.catalog.entries = vorlu.catalog.entries;
    const std::string time = ctl::momentText(mac.clock, static_cast<std::int64_t>(mac.clock.now()));
    endOf([&] { scheduledUpdateFlow(run, "run"); });
    EXPECT_EQ(asks, !shown.empty()) << when;
    if (asks) timeline.push_back(time + " " + shown.front());
    shown.clear();
  }
  ctl::RehearsalPlan plan() {
    ctl::RehearsalPlan plan{mac.read("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist"),
                            static_cast<std::int64_t>(start)};
    plan.toMinute = 11 * 60;
    plan.zone = "UTC";
    plan.answers.clear();
    for (const std::string& word : parts(GetParam().second, ' ')) plan.answers.push_back(*ctl::userAnswer(word));
    return plan;
  }

  const std::map<std::string, std::string> codes{{"defer", "2"}, {"quit", "137"}, {"update", "0"}};
  std::string forecast;
  Strings timeline;
};

TEST_P(Rehearsed, AsTheMonthThenGoes) {
  begin();
  for (int slot = 0; slot < 30 * 96; ++slot) {
    if (slot % 96 > 8) continue;
    mac.clock.set(std::max(mac.clock.now(), start + slot * 900.0));
    if (slot % (7 * 96) == 0) release(slot / (7 * 96) + 2);
    oneRun();
  }
  const auto rehearsed = ctl::rehearse(plan(), site);
  ASSERT_TRUE(rehearsed) << rehearsed.error();
  Strings expected{"Slides 1.0"};
  for (const ctl::TimelineEntry& entry : *rehearsed) {
    if (entry.event == "updated") expected[0] = "Slides " + entry.detail.substr(entry.detail.rfind(' ') + 1);
    if (!entry.answer) continue;
    const char* kind = entry.event == "asked" ? "initial" : "grace";
    expected.push_back(fmt::format("{} {} {}", entry.time, kind, codes.at(*entry.answer)));
  }
  timeline.insert(timeline.begin(), "Slides " + installedVersion("Slides"));
  EXPECT_EQ(timeline, expected);
  EXPECT_GE(timeline.size(), 5u);
}

const std::string hourly =
    "<key>runFrequency</key><dict><key>frequencyElapsedMode</key><string>recurring</string></dict>";
const std::string thursdays =
    "<key>runFrequency</key><dict><key>runType</key><string>specifyPatchDay</string><key>patchDay</key>"
    "<integer>5</integer><key>patchDayFrequency</key><string>recurring</string></dict><key>runLimitations</key><dict>"
    "<key>friday</key><false/><key>thursdayStartTime</key><string>10:00</string><key>thursdayEndTime</key>"
    "<string>10:30</string></dict>";
const std::string disabled =
    "<key>deferralConfiguration</key><dict><key>deferralOption</key><string>disableDeferrals</string></dict>";

INSTANTIATE_TEST_SUITE_P(Months, Rehearsed,
                         testing::Values(Month{"", "defer defer update"}, Month{hourly, "quit defer update"},
                                         Month{thursdays, "defer defer update defer update"},
                                         Month{disabled, "update"}));

struct StatusOfAgent : PromptedRun {};

TEST_F(StatusOfAgent, TellsWhatItCanReadAndNamesTheRest) {
  mac.processes.on("/usr/local/bin/vorlu --version", {.output = "Vorlu Version: 9.1\n"});
  mac.write(paths::runData, "garbage");
  const AppInventory found{
      {{{"Due", "", "", "1", "2", "", true, true, true}, {"Excluded", "", "", "1", "2", "", true}}}};
  mac.write(paths::appInventory, encodeJson(found, JsonLayout::pretty));
  const ctl::AgentStatus status = ctl::readStatus(mac.platform(), site);
  EXPECT_EQ(status.agentVersion, "9.1");
  EXPECT_THAT(ctl::toText(status), HasSubstr("Pending updates   1\n  Due 1 -> 2, its installer is in the cache\n"));
  EXPECT_THAT(status.unreadable, testing::ElementsAre(HasSubstr(paths::runData)));
}

}  // namespace
}  // namespace vorlu::test
