// A fleet of Macs over a week, by the agent's own rules of what is due when: how many requests of each kind the servers
// get, and their peaks.
//
//   bench-fleet [--agents N] [--scenario NAME] [--hours ROLE]
//
// --hours prints a role's requests in each hour of the week instead.

#include <fmt/format.h>

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench/fleet/scenario.h"
#include "bench/fleet/server_load.h"

namespace {

using namespace vorlu::fleet;

constexpr std::array<const char*, roleCount> roleNames = {"reachability", "timestamp", "secrets",  "catalog",
                                                          "manifest",     "icon",      "download", "report"};
constexpr std::int64_t windowOfPeaks = 900;

std::string dayTime(std::int64_t when) {
  constexpr std::array<const char*, 7> days = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
  const std::int64_t second = when - weekStart;
  return fmt::format("{} {:02}:{:02}", days.at(static_cast<std::size_t>(second / 86400)), second / 3600 % 24,
                     second / 60 % 60);
}

void printTable(const ServerLoad& load, const ServerLoad& megabytes, double agents) {
  fmt::print("{:14} {:>12} {:>9} {:>9} {:>10} {:>10} {:>12}  {}\n", "requests", "a week", "a Mac", "mean/s",
             "top second", "top minute", "top 15 min/s", "from (UTC)");
  for (std::size_t index = 0; index < roleCount; ++index) {
    const auto role = static_cast<Role>(index);
    const auto total = static_cast<double>(load.total(role));
    const Peak peak = load.peak(role, windowOfPeaks);
    fmt::print("{:14} {:12.0f} {:9.1f} {:9.1f} {:10.0f} {:10.1f} {:12.1f}  {}\n", roleNames.at(index), total,
               total / agents, total / static_cast<double>(weekSeconds), load.peak(role, 1).perSecond,
               load.peak(role, 60).perSecond, peak.perSecond, dayTime(peak.when));
  }
  const Peak second = load.peak(1);
  const Peak quarter = load.peak(windowOfPeaks);
  fmt::print("{:14} {:12} {:9} {:9} {:10.0f} {:10.1f} {:12.1f}  {}\n", "all", "", "", "", second.perSecond,
             load.peak(60).perSecond, quarter.perSecond, dayTime(quarter.when));
  const Peak bytes = megabytes.peak(Role::download, windowOfPeaks);
  fmt::print("installers: {:.1f} TB a week, top 15 minutes {:.1f} Gbit/s from {}\n",
             static_cast<double>(megabytes.total(Role::download)) / 1e6, bytes.perSecond * 8 / 1000,
             dayTime(bytes.when));
}

int printHours(const ServerLoad& load, std::string_view name) {
  for (std::size_t index = 0; index < roleCount; ++index) {
    if (name != roleNames.at(index)) continue;
    for (std::int64_t hour = 0; hour < weekSeconds / 3600; ++hour)
      fmt::print("{} {}\n", dayTime(weekStart + hour * 3600), load.inHour(static_cast<Role>(index), hour));
    return 0;
  }
  fmt::print(stderr, "no such role: {}\n", name);
  return 2;
}

int usage() {
  fmt::print(stderr, "usage: bench-fleet [--agents N] [--scenario NAME] [--hours ROLE]\nscenarios:\n");
  for (const Scenario& scenario : scenarios()) fmt::print(stderr, "  {:8} {}\n", scenario.name, scenario.what);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  long agents = 100'000;
  std::string_view name = "office";
  std::string_view hours;
  for (int index = 1; index < argc; index += 2) {
    const std::string_view option = argv[index];
    if (index + 1 == argc) return usage();
    if (option == "--agents") {
      agents = std::atol(argv[index + 1]);
    } else if (option == "--scenario") {
      name = argv[index + 1];
    } else if (option == "--hours") {
      hours = argv[index + 1];
    } else {
      return usage();
    }
  }
  const Scenario* scenario = nullptr;
  for (const Scenario& known : scenarios())
    if (known.name == name) scenario = &known;
  if (scenario == nullptr || agents < 1) return usage();

  ServerLoad load(weekStart, weekSeconds);
  ServerLoad megabytes(weekStart, weekSeconds);
  Random random(20260112);
  for (long mac = 0; mac < agents; ++mac) {
    simulateMac(*scenario, random, [&](std::int64_t when, Role role, const Publication* app) {
      load.count(when, role);
      if (role == Role::download) megabytes.count(when, role, static_cast<std::uint32_t>(app->megabytes));
    });
  }
  if (!hours.empty()) return printHours(load, hours);
  fmt::print("{} Macs, {}: {}\n", agents, scenario->name, scenario->what);
  printTable(load, megabytes, static_cast<double>(agents));
  return 0;
}
