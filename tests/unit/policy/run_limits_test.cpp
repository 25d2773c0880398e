#include "vorlu/policy/run_limits.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

TEST(RunTimeVerdict, AtTheEdgesOfTheDocumentedWindows) {
  using enum RunTime;
  const struct {
    const char* start;
    const char* end;
    int clockTime;
    RunTime verdict;
  } cases[] = {
      {"09:00", "17:00", 859, outside},   {"09:00", "1700", 900, inside},    {"0900", "17:00", 1700, inside},
      {"09:00", "17:00", 1701, outside},  {"22:00", "06:00", 2159, outside}, {"22:00", "06:00", 2200, inside},
      {"22:00", "06:00", 559, inside},    {"22:00", "06:00", 600, outside},  {"00:00", "23:59", 0, inside},
      {"08:00", "0800", 1200, sameTimes}, {"9:00", "17:00", 0, invalid},     {"09:00", "24:00", 0, invalid},
      {"09:60", "17:00", 0, invalid},     {"٠٩:٠٠", "17:00", 0, invalid},    {"09:00\n", "17:00", 0, invalid},
      {"-1:00", "17:00", 0, invalid},     {"", "17:00", 0, notLimited},      {"09:00", ":", 0, notLimited},
  };
  for (const auto& [start, end, clockTime, verdict] : cases)
    EXPECT_EQ(runTimeVerdict({true, start, end}, clockTime), verdict) << start << " to " << end << " at " << clockTime;
  EXPECT_EQ(runTimeVerdict({true, "09:00", std::nullopt}, 0), notLimited);
}

struct RunLimitsGates : testing::Test, AgentRun {
  bool day(const RunLimits& limits, std::optional<std::int64_t> patchDay = std::nullopt) {
    return passesRunDayGate(vorlu.log, mac.clock, limits, patchDay);
  }
  bool time(const RunLimits& limits) { return passesRunTimeGate(vorlu.log, mac.clock, limits); }
};

TEST_F(RunLimitsGates, SayWhyOnAMondayAtNoon) {
  RunLimits limits;
  EXPECT_TRUE(day(limits));
  limits.monday = false;
  EXPECT_FALSE(day(limits, 3));
  EXPECT_TRUE(day(limits, 2));
  EXPECT_EQ(messages(), (Lines{"No run day limitations were configured for today (Monday)",
                               "A run day limitation was set for today (Monday)",
                               "A run day limitation was set for today (Monday), but today is also the configured "
                               "patch day. The run day limitation will be ignored"}));
  limits.mondayStartTime = "9:00";
  limits.mondayEndTime = "12:00";
  EXPECT_TRUE(time(limits));
  limits.mondayStartTime = "09:00";
  EXPECT_TRUE(time(limits));
  mac.clock.advance(60);
  EXPECT_FALSE(time(limits));
  EXPECT_EQ(messages(),
            (Lines{"Checking for any configured Monday run time limitations...",
                   "Error: An invalid Monday run time limitation was specified (start: 900, end: 1200). Please speciy "
                   "a valid start and end time in 24 hour format, e.g., 09:00 for 9am or 21:00 for 9pm",
                   "Checking for any configured Monday run time limitations...",
                   "Found Monday run time limitation (Start Time: 09:00, End Time: 12:00)",
                   "The current time (12:00) is within the allowed run time. Continuing...",
                   "Checking for any configured Monday run time limitations...",
                   "Found Monday run time limitation (Start Time: 09:00, End Time: 12:00)",
                   "The current time (12:01) is outside of the allowed run time"}));
}

}  // namespace
}  // namespace vorlu::test
