#pragma once

#include <string>
#include <vector>

#include "bench/fleet/fleet_agent.h"
#include "bench/fleet/presence.h"

namespace vorlu::fleet {

inline constexpr std::int64_t weekStart = 1768176000;  ///< Monday, 2026-01-12 00:00 UTC
inline constexpr std::int64_t weekSeconds = 7 * 86400;

/// Macs of one time zone.
struct Site {
  double share = 1;         ///< of the fleet
  std::int64_t offset = 0;  ///< seconds east of UTC
};

/// A fleet in a week.
struct Scenario {
  std::string name;
  std::string what;
  std::vector<Site> sites;
  double desktops = 0.15;         ///< share of Macs that never sleep
  std::int64_t powerReturns = 0;  ///< when all desktops start up within a minute; 0 for never
  FleetProfile profile = {};
};

const std::vector<Scenario>& scenarios();
/// A week's publications, of three common apps, and one change of the certificates.
const ServerHistory& weekOfServer();

/// Runs one Mac of the scenario through the week.
void simulateMac(const Scenario& scenario, Random& random, const FleetAgent::Send& send);

}  // namespace vorlu::fleet
