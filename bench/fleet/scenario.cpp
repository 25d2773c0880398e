#include "bench/fleet/scenario.h"

#include "vorlu/state/run_schedule.h"

namespace vorlu::fleet {
namespace {

constexpr std::int64_t hour = 3600;
constexpr std::int64_t day = 24 * hour;
constexpr std::int64_t launchInterval = 900;  // the LaunchDaemon's StartInterval
constexpr double defersShare = 0.4;           // of the prompts

FleetProfile wednesdays() {
  FleetProfile profile;
  profile.runFrequency.runType = "specifyPatchDay";
  profile.runFrequency.patchDay = 4;
  profile.runFrequency.patchDayFrequency = "recurringPromptMode";
  return profile;
}

FleetProfile withoutPrompts() {
  FleetProfile profile;
  profile.updatePrompts = false;
  return profile;
}

std::int64_t below(Random& random, std::int64_t bound) {
  return std::uniform_int_distribution<std::int64_t>(0, bound - 1)(random);
}

bool isOneOf(Random& random, double share) {
  return std::bernoulli_distribution(share)(random);
}

std::int64_t zoneOf(const std::vector<Site>& sites, Random& random) {
  double left = std::uniform_real_distribution<double>(0, 1)(random);
  for (const Site& site : sites) {
    if (left < site.share) return site.offset;
    left -= site.share;
  }
  return sites.back().offset;
}

}  // namespace

const std::vector<Scenario>& scenarios() {
  static const std::vector<Scenario> all = {
      {"office", "one country on London time, patch day Wednesday", {{1, 0}}, 0.15, 0, wednesdays()},
      {"world",
       "London 40 %, Berlin 25 %, New York 25 %, Bangalore 10 %, patch day Wednesday",
       {{0.4, 0}, {0.25, hour}, {0.25, -5 * hour}, {0.1, 5 * hour + hour / 2}},
       0.15,
       0,
       wednesdays()},
      {"quiet", "as office, without prompts", {{1, 0}}, 0.15, 0, withoutPrompts()},
      {"power",
       "desktops in one country; on Wednesday at 11:00 power returns after an hour",
       {{1, 0}},
       1,
       weekStart + 2 * day + 11 * hour,
       wednesdays()},
  };
  return all;
}

const ServerHistory& weekOfServer() {
  static const ServerHistory week = {{{weekStart + 7 * hour, 0.8, 0.7, 220, false},
                                      {weekStart + 2 * day + 9 * hour, 0.6, 0.5, 600, false},
                                      {weekStart + 3 * day + 15 * hour, 0.5, 0.8, 180, true}},
                                     {0, weekStart + day + 11 * hour}};
  return week;
}

void simulateMac(const Scenario& scenario, Random& random, const FleetAgent::Send& send) {
  const bool isDesktop = isOneOf(random, scenario.desktops);
  const std::int64_t offset = zoneOf(scenario.sites, random);
  FleetClock clock(offset);
  FleetAgent agent(
      scenario.profile, weekOfServer(),
      {[&random] { return below(random, hourlyDraws); }, [&random](double share) { return isOneOf(random, share); },
       [&random] { return isOneOf(random, defersShare); }});
  const std::int64_t lastCheck = weekStart - (isDesktop ? below(random, 63 * 60) : 2 * day);
  agent.assumeSettled(lastCheck, lastCheck + hourlyInterval(below(random, hourlyDraws)));
  const auto start = [&](std::int64_t when) {
    clock.set(when);
    agent.recurringRun(clock, send);
  };
  const std::int64_t boot = weekStart - 1 - below(random, launchInterval);
  if (!isDesktop) {
    forEachStart(openLaptop(random, weekStart - offset, 7), boot, launchInterval, start);
  } else if (scenario.powerReturns == 0) {
    forEachStart({{weekStart, weekStart + weekSeconds}}, boot, launchInterval, start);
  } else {
    forEachStart({{weekStart, scenario.powerReturns - hour}}, boot, launchInterval, start);
    const std::int64_t started = scenario.powerReturns + below(random, 60);
    forEachStart({{started, weekStart + weekSeconds}}, started, launchInterval, start);
  }
}

}  // namespace vorlu::fleet
