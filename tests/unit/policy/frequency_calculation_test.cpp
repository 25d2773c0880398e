#include "vorlu/policy/frequency_calculation.h"

#include "tests/support/agent_run.h"
#include "vorlu/policy/scheme_gate.h"

namespace vorlu::test {
namespace {

using ::testing::HasSubstr;

constexpr std::int64_t day = 86400;

TEST(FrequencyCalculation, ReckonsBackFromASecondOfTheWeek) {
  VirtualClock clock;
  clock.set(VirtualClock::defaultStart + 3723.9);  // Monday, 13:02:03
  const FrequencyCalculation monday(clock);
  const std::int64_t midnight = monday.startOfTodayTime();
  EXPECT_EQ(midnight, static_cast<std::int64_t>(VirtualClock::defaultStart) - 12 * 3600);
  EXPECT_EQ(monday.frequencyCutoffTime("FourWeeks"), midnight + 13 * 3600 + 123 - 28 * day);
  EXPECT_EQ(monday.frequencyCutoffTime("never"), monday.now());
  for (const auto& [patchDay, back] : {std::pair{1, 1}, {3, 6}, {7, 2}, {0, 2}, {8, 1}})
    EXPECT_EQ(monday.lastPatchDayStartTime(patchDay), midnight - back * day) << patchDay;
  clock.advance(5 * day);  // Saturday
  EXPECT_EQ(FrequencyCalculation(clock).lastPatchDayStartTime(1), midnight - day);
  clock.advance(day);  // Sunday
  EXPECT_EQ(FrequencyCalculation(clock).lastPatchDayStartTime(7), midnight + 5 * day);
}

/// Today is Monday the 2nd of March 2026, 12:00; `lastRun` is told in seconds before that, -1 for none.
struct SchemeCase {
  const char* keys;  ///< of `runFrequency`, "key=value" each
  std::int64_t lastRunAgo;
  bool userDeferred;
  bool goesOn;
  const char* line;          ///< in the log
  bool marksMissed = false;  ///< leaves the missed update receipt
};
void PrintTo(const SchemeCase& scheme, std::ostream* out) {
  *out << scheme.keys << ", " << scheme.lastRunAgo << (scheme.userDeferred ? " deferred" : "");
}

struct SchemeGate : testing::TestWithParam<SchemeCase>, AgentRun {
  static std::string plistKeys(const std::string& text) {
    std::string keys;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
      const std::string name = word.substr(0, word.find('=')), value = word.substr(name.size() + 1);
      const bool number = value.find_first_not_of("-0123456789") == std::string::npos;
      keys += "<key>" + name + "</key>";
      keys += value == "false" ? "<false/>"
              : number         ? "<integer>" + value + "</integer>"
                               : "<string>" + value + "</string>";
    }
    return keys;
  }
};

TEST_P(SchemeGate, DecidesAndLeavesRunDataAlone) {
  const SchemeCase& scheme = GetParam();
  setPreferences("ScheduledUpdates", "<key>runFrequency</key><dict>" + plistKeys(scheme.keys) + "</dict>");
  RunDataFile file;
  if (scheme.lastRunAgo != -1) file.LastRun = static_cast<std::int64_t>(VirtualClock::defaultStart) - scheme.lastRunAgo;
  file.UserDeferred = scheme.userDeferred;
  store(file);
  const std::string before = mac.read(paths::runData);
  mac.write(paths::missedUpdate, "");
  if (scheme.marksMissed) mac.files.remove(paths::missedUpdate);
  EXPECT_EQ(passesSchemeGate(vorlu), scheme.goesOn);
  EXPECT_THAT(messages(), testing::Contains(HasSubstr(scheme.line)));
  EXPECT_EQ(mac.read(paths::runData), before);
  EXPECT_TRUE(!scheme.marksMissed || mac.exists(paths::missedUpdate));
}

const char* const recurring = "frequencyElapsedMode=singlepromptmode deferralWindow=60";
const char* const patchMonday = "runType=SpecifyPatchDay patchDay=2";
const char* const patchMondayRecurring =
    "runType=specifyPatchDay patchDay=2 patchDayFrequency=x patchDayDeferralWindow=30";
const char* const patchFriday = "runType=specifyPatchDay patchDay=6";
const char* const patchFridayRecurring =
    "runType=specifyPatchDay patchDay=6 patchDayFrequency=x patchDayDeferralWindow=0";
constexpr std::int64_t sinceFriday = 3 * day + 12 * 3600;  // its first second

INSTANTIATE_TEST_SUITE_P(
    Schemes, SchemeGate,
    testing::Values(
        SchemeCase{"", -1, false, true, "No updates have occurred in the last week. Continuing..."},
        SchemeCase{"", 7 * day, true, true, "No updates have occurred in the last week"},
        SchemeCase{"", 7 * day - 1, false, false, "An update has occurred in the last week. No action is required."},
        SchemeCase{recurring, -day, true, false, "The deferral period has not elapsed."},
        SchemeCase{"frequencyOption=ONEDAY", day, false, true, "Run frequency option configured: Once every day"},
        SchemeCase{"frequencyOption=sometimes", 1, true, true,
                   "Error: Invalid frequencyOption key configured: sometimes"},
        SchemeCase{"runType=never", 1, true, true, "Error: Unknown Run Limitation Type specified: never."},
        SchemeCase{recurring, 3599, true, true, "The deferral period has elapsed. Continuing..."},
        SchemeCase{recurring, 3598, true, false, "Deferral end time: 2026-03-02 12:00:02 +0000"},
        SchemeCase{recurring, 5, false, false, "An update has occurred in the last week."},
        SchemeCase{patchMonday, 12 * 3600, true, true, "An update check has not completed today. Continuing..."},
        SchemeCase{patchMonday, 12 * 3600 - 1, false, false, "An update check has already completed today."},
        SchemeCase{patchMondayRecurring, 12 * 3600, true, true, "No previous update checks have completed today."},
        SchemeCase{patchMondayRecurring, 1800, true, true, "The deferral period has elapsed. Continuing..."},
        SchemeCase{patchMondayRecurring, 1799, true, false, "The deferral period has not elapsed."},
        SchemeCase{patchMondayRecurring, 1799, false, false, "but the user has already updated today."},
        SchemeCase{patchFriday, -1, false, false, "The last run has not yet been recorded."},
        SchemeCase{patchFriday, sinceFriday, true, true, "has not occurred since the last configured patch day", true},
        SchemeCase{patchFriday, sinceFriday - 1, true, false, "An update check has occurred since the last"},
        SchemeCase{"runType=specifyPatchDay patchDay=6 missedUpdatePrompt=false", 20 * day, false, false,
                   "Missed update prompts  are not enabled"},
        SchemeCase{patchFridayRecurring, 9, true, true, "The user deferred on patch day but did not install", true},
        SchemeCase{patchFridayRecurring, 9, false, false, "The user has updated on or since patch day."},
        SchemeCase{patchFridayRecurring, sinceFriday, true, false, "The user has updated on or since patch day."},
        SchemeCase{"runType=specifyPatchDay patchDay=8", 30 * day, false, true, " has been configured as the", true}));

}  // namespace
}  // namespace vorlu::test
