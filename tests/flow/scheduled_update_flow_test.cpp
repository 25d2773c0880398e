#include "vorlu/policy/scheduled_update_flow.h"

#include "tests/flow/prompted_run.h"
#include "vorlu/policy/scheduled_rules.h"

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

/// One run on Monday at noon. The count is 2 and the last activity long ago, unless the profile says otherwise.
struct Ending {
  const char* name;
  const char* trigger;
  const char* scheduled;  ///< keys of the profile's section
  const char* answers;
  const char* shown;
  int status;
  const char* state;  ///< DeferCount, whether LastRun has moved, UserDeferred, LastCompliant
  const char* line;   ///< in the log
};
void PrintTo(const Ending& ending, std::ostream* out) {
  *out << ending.name;
}

const char* const untouched = "1 then 1 N/A";
const char* const done = "2 now 0 Mar 02";
const char* const updated = "initial 0, window, relaunch, complete";
const char* const runFrequency = "<key>runFrequency</key><dict><key>";
const char* const deferralOption = "<key>deferralConfiguration</key><dict><key>deferralOption</key><string>";

struct ScheduledUpdateFlow : PromptedRun {
  static constexpr std::int64_t longAgo = 1000;

  void begin() {
    RunDataFile file;
    file.DeferCount = "1";
    file.LastRun = longAgo;
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

struct Endings : ScheduledUpdateFlow, testing::WithParamInterface<Ending> {};

TEST_P(Endings, LeaveThisBehind) {
  const Ending& ending = GetParam();
  const std::string name = ending.name;
  addApp("Slides", name.find("closed") == std::string::npos);
  if (name.find("fails") != std::string::npos) vorlu.catalog.entries[0].universalInstallerHash = "wrong";
  if (name.find("nobody") != std::string::npos) mac.consoleUser.user = "loginwindow";
  mac.cameras.cameras = {{35, true}};
  setPreferences("ScheduledUpdates", ending.scheduled);
  begin();
  if (name == "scheme") {
    RunDataFile file = runData();
    file.LastRun = static_cast<std::int64_t>(mac.clock.now()) - 5;
    store(file);
  }
  willAnswer(ending.answers);
  EXPECT_EQ(flow(ending.trigger), ending.status);
  EXPECT_EQ(seen(), ending.shown);
  EXPECT_EQ(state(), ending.state);
  EXPECT_THAT(messages(), Contains(HasSubstr(ending.line)));
  EXPECT_EQ(vorlu.updates.updatesRan, std::string(ending.shown).find("relaunch") != std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    ScheduledUpdateFlow, Endings,
    testing::Values(
        Ending{"scheme", "run", "", "", "", 0, "1 now 1 N/A",
               "The user deferred the update in the last week and single"},
        Ending{"other day", "run", "<key>runLimitations</key><dict><key>monday</key><false/></dict>", "", "", 1,
               untouched, "A run day limitation was set for today (Monday)"},
        Ending{"other time", "prompt",
               "<key>runLimitations</key><dict><key>mondayStartTime</key><string>13:00</string>"
               "<key>mondayEndTime</key><string>14:00</string></dict>",
               "", "", 0, untouched, "The current time (12:00) is outside"},
        Ending{"in a call", "run", "<key>acceptableCameraUsage</key><true/>", "", "", 0, untouched, "The camera is in"},
        Ending{"in a call, timer", "timerprompt", "<key>acceptableCameraUsage</key><true/>", "4",
               "grace 4, window, relaunch, complete", 0, done, "Timer prompt called. Prompting"},
        Ending{"closed", "run", "", "", "", 0, "2 then 0 Mar 02", "No cached updates were found"},
        Ending{"closed, test", "testprompt", "", "", "", 0, "1 then 1 Mar 02", "No cached updates were found"},
        Ending{"nobody", "run", "", "", "", 0, untouched, "Slides needs to be updated"},
        Ending{"deferred", "run", "", "4 4 2", "initial 4, initial 4, initial 2", 0, "0 now 1 Feb 15",
               "Defer selected"},
        Ending{"died", "prompt", "", "143", "initial 143", 0, "0 now 1 N/A", "quit unexpectedly. Exit code: 143"},
        Ending{"agreed", "run", "", "0", updated, 0, done, "Deferrals reset"},
        Ending{"test", "testprompt", "<key>acceptableCameraUsage</key><true/>", "0", updated, 0, done,
               "Test prompt flag defined, ignoring any configured DND keys..."},
        Ending{"fails", "run", "", "0", "initial 0, window, relaunch, failure", 1, untouched,
               "Error installing the Slides update. Review the Vorlu.log file for detailed information"},
        Ending{"no prompts", "run",
               "<key>updateProgressPrompt</key><string>noPrompt</string><key>displayCompletePrompt</key><false/>", "0",
               "initial 0, relaunch", 0, done, "No update progress prompt will be displayed during the update"},
        Ending{"self service", "selfservice", "<key>acceptableCameraUsage</key><true/>", "0",
               "initial 0, window, relaunch, complete", 0, done, "Initialising Self Service update mechanism..."},
        Ending{"skipped", "selfservice", "", "2", "initial 2", 0, untouched, "User skipped the Self Service update"},
        Ending{"self service, closed", "selfservice", "", "", "up to date", 0, "2 then 0 Mar 02",
               "User acknowledged"}));

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
  EXPECT_EQ(state(), untouched);
}

// March 2026, in which the Mac is on from 9 to 12, a run each 15 minutes. Slides is always open; a new version comes on
// each Wednesday at 10. The user answers from a list and then agrees, or lets the grace period pass.
struct Month {
  const char* name;
  const char* frequency;  ///< keys of `runFrequency`
  const char* option;     ///< `deferralOption`
  const char* answers;
  const char* timeline;
  int dayOff = 0;  ///< weekday on which the Mac stays off
};
void PrintTo(const Month& month, std::ostream* out) {
  *out << month.name;
}

struct Months : ScheduledUpdateFlow, testing::WithParamInterface<Month> {
  void configure(const Month& month) {
    setPreferences("ScheduledUpdates", fmt::format("<key>displayCompletePrompt</key><false/>{}{}</string></dict>"
                                                   "<key>runFrequency</key><dict>{}</dict>",
                                                   deferralOption, month.option, month.frequency));
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
    const int weekday = (day + 1) % 7 + 1;
    for (int quarter = 9 * 4; quarter <= 12 * 4; ++quarter) {
      if (day % 7 == 2 && quarter == 10 * 4) release(day / 7 + 3);
      mac.clock.set(std::max(mac.clock.now(), midnight + day * 86400.0 + quarter * 900.0));
      if (weekday != GetParam().dayOff) oneRun();
    }
  }
  EXPECT_EQ(timeline, GetParam().timeline);
}

const char* const recurringHourly =
    "<key>frequencyElapsedMode</key><string>recurring</string><key>deferralWindow</key><integer>60</integer>";
const char* const thursdays =
    "<key>runType</key><string>specifyPatchDay</string><key>patchDay</key><integer>5</integer>";
const char* const thursdaysRecurring =
    "<key>runType</key><string>specifyPatchDay</string><key>patchDay</key><integer>5</integer>"
    "<key>patchDayFrequency</key><string>recurring</string>"
    "<key>patchDayDeferralWindow</key><integer>120</integer>";

INSTANTIATE_TEST_SUITE_P(
    ScheduledUpdateFlow, Months,
    testing::Values(Month{"weekly", "", "specifyDeferralLimit", "2 2", ""},
                    Month{"weekly, recurring", recurringHourly, "specifyDeferralLimit", "2 2 4 2", ""},
                    Month{"weekly, unlimited", recurringHourly, "disableDeferralLimit", "2 2 2 2 4 4 0 137", ""},
                    Month{"weekly, no deferrals", "", "disableDeferrals", "4 0 137", ""},
                    Month{"patch day", thursdays, "specifyDeferralLimit", "2 2 4", ""},
                    Month{"patch day, recurring", thursdaysRecurring, "specifyDeferralLimit", "2 2 4 2", ""},
                    Month{"patch day missed", thursdays, "specifyDeferralLimit", "0 2 0", "", 5}));

}  // namespace
}  // namespace vorlu::test
