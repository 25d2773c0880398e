#include "vorlu/policy/scheduled_update_flow.h"

#include "tests/flow/prompted_run.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/policy/scheduled_rules.h"
#include "vorlu/state/replacement.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

TEST(PromptChoice, ByModeTriggerAndCount) {
  using enum PromptChoice;
  using enum DeferralMode;
  for (const Trigger trigger : {Trigger::run, Trigger::prompt, Trigger::testPrompt}) {
    EXPECT_EQ(promptChoice(limited, trigger, 1), initial);
    for (const auto left : {std::optional<std::int64_t>(0), std::optional<std::int64_t>(-1), {}})
      EXPECT_EQ(promptChoice(limited, trigger, left), graceCountUsedUp);
    EXPECT_EQ(promptChoice(unlimited, trigger, {}), initial);
    EXPECT_EQ(promptChoice(disabled, trigger, 2), graceDeferralsDisabled);
    EXPECT_EQ(promptChoice(other, trigger, 2), none);
  }
  for (const DeferralMode mode : {limited, unlimited, other})
    EXPECT_EQ(promptChoice(mode, Trigger::timerPrompt, 2), graceOnDemand);
  EXPECT_EQ(promptChoice(disabled, Trigger::timerPrompt, 2), graceDeferralsDisabled);
  EXPECT_EQ(promptChoice(other, Trigger::selfService, 0), initial);
}

/// Keys of the profile's section by the word that stands for them in the tables below.
const std::map<std::string, std::string> profiles = {
    {"", ""},
    {"notMonday", "<key>runLimitations</key><dict><key>monday</key><false/></dict>"},
    {"afternoon",
     "<key>runLimitations</key><dict><key>mondayStartTime</key><string>13:00</string>"
     "<key>mondayEndTime</key><string>14:00</string></dict>"},
    {"disabled",
     "<key>deferralConfiguration</key><dict><key>deferralOption</key><string>disableDeferrals</string></dict>"},
    {"camera", "<key>acceptableCameraUsage</key><true/>"},
    {"quiet", "<key>updateProgressPrompt</key><string>noPrompt</string><key>displayCompletePrompt</key><false/>"},
};

// One run on Monday at noon with one deferral left: what is special, trigger, profile, the user's answers, what he
// sees, exit status, DeferCount with whether LastRun moved, UserDeferred and LastCompliant, and a part of the log.
const char* const endings = R"(
recent      | run         |           |       |                     | 0 | 1 now 1 N/A     | single prompt mode is enabled. No action
            | run         | notMonday |       |                     | 1 | 1 then 1 N/A    | A run day limitation was set for today (Monday)
            | prompt      | afternoon |       |                     | 0 | 1 then 1 N/A    | The current time (12:00) is outside
            | run         | camera    |       |                     | 0 | 1 then 1 N/A    | The camera is in use. Skipping update...
            | timerprompt | camera    | 4     | grace 4, UPDATE     | 0 | 2 now 0 Mar 02  | Timer prompt called. Prompting user with
closed      | run         |           |       |                     | 0 | 2 then 0 Mar 02 | No cached updates were found
closed      | testprompt  |           |       |                     | 0 | 1 then 1 Mar 02 | No cached updates were found
nobody      | run         | disabled  |       |                     | 0 | 1 then 1 N/A    | Slides is currently in use
            | run         |           | 4 4 2 | initial 4, initial 4, initial 2 | 0 | 0 now 1 Feb 15 | Defer selected
            | prompt      |           | 143   | initial 143         | 0 | 0 now 1 N/A     | prompt quit unexpectedly. Exit code: 143
            | run         |           | 0     | initial 0, UPDATE   | 0 | 2 now 0 Mar 02  | Deferrals reset
            | testprompt  | camera    | 0     | initial 0, UPDATE   | 0 | 2 now 0 Mar 02  | ignoring any configured DND keys...
broken      | run         |           | 0     | initial 0, window, relaunch, failure | 1 | 1 then 1 N/A | Error installing the Slides update.
            | run         | quiet     | 0     | initial 0, relaunch | 0 | 2 now 0 Mar 02  | No update progress prompt will be displayed
            | selfservice | camera    | 0     | initial 0, UPDATE   | 0 | 2 now 0 Mar 02  | Initialising Self Service update mechanism...
            | selfservice |           | 2     | initial 2           | 0 | 1 then 1 N/A    | User skipped the Self Service update
            | selfservice |           | 9     | initial 9           | 0 | 1 then 1 N/A    | prompt quit unexpectedly. Exit code: 9
closed      | selfservice |           |       | up to date          | 0 | 2 then 0 Mar 02 | User acknowledged
)";

Strings rowsOf(const std::string& table) {
  Strings rows;
  std::istringstream stream(table);
  for (std::string row; std::getline(stream, row);)
    if (!row.empty()) rows.push_back(row);
  return rows;
}
Strings columnsOf(const std::string& row) {
  Strings columns;
  std::istringstream stream(row);
  for (std::string column; std::getline(stream, column, '|');) columns.push_back(trimmed(column));
  return columns;
}

struct ScheduledUpdateFlow : PromptedRun {
  static constexpr std::int64_t longAgo = 1000;

  void begin(std::int64_t lastRun = longAgo) {
    RunDataFile file;
    file.DeferCount = "1";
    file.LastRun = lastRun;
    file.UserDeferred = true;
    file.LastCompliant = "N/A";
    store(file);
  }
  std::string state() {
    const RunDataFile file = runData();
    return fmt::format("{} {} {} {}", *file.DeferCount, *file.LastRun == longAgo ? "then" : "now",
                       int{*file.UserDeferred}, file.LastCompliant->substr(0, 6));
  }
  /// The status with which the run ends.
  int flow(const std::string& trigger) {
    return endOf([&] { scheduledUpdateFlow(vorlu, trigger); }).value_or(vorlu.modes.runExitStatus);
  }
};

struct Endings : ScheduledUpdateFlow, testing::WithParamInterface<std::string> {};

TEST_P(Endings, LeaveThisBehind) {
  const Strings row = columnsOf(GetParam());
  addApp("Slides", row[0] != "closed");
  if (row[0] == "broken") vorlu.catalog.entries[0].universalInstallerHash = "wrong";
  if (row[0] == "nobody") mac.consoleUser.user = "loginwindow";
  mac.cameras.cameras = {{35, true}};
  setPreferences("ScheduledUpdates", profiles.at(row[2]));
  begin(row[0] == "recent" ? static_cast<std::int64_t>(mac.clock.now()) - 5 : longAgo);
  willAnswer(row[3]);
  EXPECT_EQ(flow(row[1]), std::stoi(row[5]));
  EXPECT_EQ(seen(), replacedAll(row[4], "UPDATE", "window, relaunch, complete"));
  EXPECT_EQ(state(), row[6]);
  EXPECT_THAT(messages(), Contains(HasSubstr(row[7])));
  EXPECT_EQ(vorlu.updates.updatesRan,
            row[4].find("UPDATE") != std::string::npos || row[0] == "broken" || row[2] == "quiet");
}

INSTANTIATE_TEST_SUITE_P(ScheduledUpdateFlow, Endings, testing::ValuesIn(rowsOf(endings)));

TEST_F(ScheduledUpdateFlow, PromptsForOpenAppsAloneAndTellsOfWhatFailedAmongThem) {
  for (const char* name : {"Slides", "Notes", "Draw"}) addApp(name);
  addApp("Closed", false);
  addApp("Closed And Broken", false);
  addApp("Excluded");
  vorlu.catalog.entries[1].universalInstallerHash = "wrong";
  vorlu.catalog.entries[4].universalInstallerHash = "wrong";
  setPreferences("GeneralOptions", "<key>excludedAppUpdates</key><array><string>id.Excluded</string></array>");
  begin();
  EXPECT_EQ(flow("run"), 1);
  EXPECT_EQ(seen(), "initial 0, window, relaunch, relaunch, relaunch, failure");
  std::string prompts;
  for (const std::string& line : tools())
    if (line.starts_with("zsh: \"")) prompts += line;
  for (const char* name : {"Slides", "Notes", "Draw"}) EXPECT_THAT(prompts, HasSubstr(name));
  EXPECT_THAT(prompts, testing::Not(testing::AnyOf(HasSubstr("Closed"), HasSubstr("Excluded"))));
  EXPECT_THAT(prompts, HasSubstr("There was a problem updating **Notes**"));
  EXPECT_EQ(vorlu.updates.failedUpdates, (Lines{"server.Closed And Broken", "server.Notes"}));
  for (const char* name : {"Slides", "Draw", "Closed"}) EXPECT_EQ(installedVersion(name), "2.0") << name;
  EXPECT_EQ(runData().LastCompliant, "N/A");
}

TEST_F(ScheduledUpdateFlow, EndsQuietlyWhenTheUserLogsOutWhileThePromptIsUp) {
  addApp("Slides");
  begin();
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = ""});
  willAnswer("4 4");
  mac.clock.at(0, [this] { mac.consoleUser.user = "loginwindow"; });
  vorlu.consoleUser = "alice";
  EXPECT_EQ(flow("run"), 0);
  EXPECT_EQ(seen(), "initial 4");
  EXPECT_EQ(state(), "1 then 1 N/A");
}

// March 2026, in which the Mac is on from 9 to 12, a run each 15 minutes. Slides is always open; a new version comes on
// each Wednesday at 10. The user answers from a list and then agrees, or lets the grace period pass.
struct Month {
  const char* frequency;  ///< keys of `runFrequency`
  const char* option;     ///< `deferralOption`
  const char* answers;
  int dayOff;  ///< of the month, on which the Mac stays off
  const char* timeline;
};
void PrintTo(const Month& month, std::ostream* out) {
  *out << month.option << month.frequency;
}

struct Months : ScheduledUpdateFlow, testing::WithParamInterface<Month> {
  void configure(const Month& month) {
    // without a window, whose bar takes as much of the clock's time as the real work takes
    setPreferences("ScheduledUpdates",
                   fmt::format("{}{}<key>deferralConfiguration</key><dict><key>deferralOption</key><string>{}</string>"
                               "</dict>",
                               profiles.at("quiet"), month.frequency, month.option));
    RunDataFile fresh;
    fresh.CurrentRunType = "N/A";
    store(fresh);
  }
  void oneRun() {
    Vorlu run(mac.platform(), site);
    run.catalog.entries = vorlu.catalog.entries;
    run.updates.passDone = true;  // as after the hourly check
    if (installedVersion("Slides") != *vorlu.catalog.entries[0].latestVersion) {
      run.updates.skippedUpdates = {pending("Slides")};
      if (!running.contains("Slides")) open("Slides");
    }
    const std::string when = mac.clock.format(mac.clock.now(), "EEE d HH:mm");
    endOf([&] { scheduledUpdateFlow(run, "run"); });
    if (!shown.empty()) timeline += when + " " + seen() + "\n";
  }
  void release(int number) {
    AppBlueprints& app = vorlu.catalog.entries[0];
    mac.addApplication(pathOf("Slides"), "com.example.Slides", installedVersion("Slides"));
    app.latestVersion = fmt::format("{}.0", number);
    serve(app, appArchive("Slides.app", *app.latestVersion));
  }
  std::string timeline;
};

TEST_P(Months, AsAnAdministratorExpects) {
  constexpr Seconds midnight = VirtualClock::defaultStart - 12 * 3600;
  addApp("Slides");
  configure(GetParam());
  willAnswer(GetParam().answers);
  mac.clock.set(midnight);
  for (int day = 0; day < 30; ++day) {
    for (int quarter = 9 * 4; quarter <= 12 * 4; ++quarter) {
      if (day % 7 == 2 && quarter == 10 * 4) release(day / 7 + 3);
      mac.clock.set(std::max(mac.clock.now(), midnight + day * 86400.0 + quarter * 900.0));
      if (day + 2 != GetParam().dayOff) oneRun();
    }
  }
  EXPECT_EQ(timeline, GetParam().timeline);
}

const char* const hourly = R"(<key>runFrequency</key><dict><key>frequencyElapsedMode</key><string>recurring</string>
    <key>deferralWindow</key><integer>60</integer></dict>)";
const char* const thursdays = R"(<key>runFrequency</key><dict><key>runType</key><string>specifyPatchDay</string>
    <key>patchDay</key><integer>5</integer></dict>)";
const char* const twoHourly = R"(<key>runFrequency</key><dict><key>runType</key><string>specifyPatchDay</string>
    <key>patchDay</key><integer>5</integer><key>patchDayFrequency</key><string>recurring</string>
    <key>patchDayDeferralWindow</key><integer>120</integer></dict>)";

// clang-format off
INSTANTIATE_TEST_SUITE_P(ScheduledUpdateFlow, Months, testing::Values(
    Month{"", "specifyDeferralLimit", "2 2", 0, R"(Mon 2 09:00 initial 2
Mon 9 09:15 initial 2
Mon 16 09:30 grace 0, relaunch
Mon 23 09:45 initial 0, relaunch
Mon 30 10:00 initial 0, relaunch
)"},
    Month{hourly, "disableDeferralLimit", "2 2 2 2 4 4 0 137", 0, R"(Mon 2 09:00 initial 2
Mon 2 10:00 initial 2
Mon 2 11:00 initial 2
Mon 2 12:00 initial 2
Tue 3 09:00 initial 4, initial 4, initial 0, relaunch
Tue 10 09:15 initial 137
Tue 10 10:15 initial 0, relaunch
Tue 17 10:30 initial 0, relaunch
Tue 24 10:45 initial 0, relaunch
Tue 31 11:00 initial 0, relaunch
)"},
    Month{"", "disableDeferrals", "4 0 137", 0, R"(Mon 2 09:00 grace 4, relaunch
Mon 9 09:15 grace 0, relaunch
Mon 16 09:30 grace 137, relaunch
Mon 23 09:45 grace 0, relaunch
Mon 30 10:00 grace 0, relaunch
)"},
    Month{thursdays, "specifyDeferralLimit", "2 0", 12, R"(Thu 5 09:00 initial 2
Fri 13 09:00 initial 0, relaunch
Thu 19 09:00 initial 0, relaunch
Thu 26 09:00 initial 0, relaunch
)"},
    Month{twoHourly, "specifyDeferralLimit", "2 2 4 2", 0, R"(Thu 5 09:00 initial 2
Thu 5 11:00 initial 2
Fri 6 09:00 grace 4, relaunch
Thu 12 09:00 initial 2
Thu 12 11:00 initial 0, relaunch
Thu 19 09:00 initial 0, relaunch
Thu 26 09:00 initial 0, relaunch
)"}));
// clang-format on

}  // namespace
}  // namespace vorlu::test
