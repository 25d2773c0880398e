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

TEST(RunLimitsGates, OnAMondayAtNoon) {
  AgentRun run;
  VirtualClock& clock = run.mac.clock;
  RunLimits limits;
  EXPECT_TRUE(passesRunDayGate(run.vorlu.log, clock, limits, std::nullopt));
  limits.monday = false;
  EXPECT_FALSE(passesRunDayGate(run.vorlu.log, clock, limits, 3));
  EXPECT_TRUE(passesRunDayGate(run.vorlu.log, clock, limits, 2));
  const struct {
    const char *start, *end, *line;
    bool passes;
  } times[] = {
      {"", "", "No run time limitations were found for Monday", true},
      {"9am", "17:00", "Error: An invalid Monday run time limitation was specified (start: 9am, end: 1700)", true},
      {"08:00", "0800", "Warning: Run time limitations for Monday were found, but the start and end times", true},
      {"13:00", "14:00", "", false},
  };
  for (const auto& [start, end, line, passes] : times) {
    limits.mondayStartTime = start, limits.mondayEndTime = end;
    EXPECT_EQ(passesRunTimeGate(run.vorlu.log, clock, limits), passes) << line;
    EXPECT_THAT(run.messages(), testing::Contains(testing::StartsWith(line))) << start;
  }
}

}  // namespace
}  // namespace vorlu::test
