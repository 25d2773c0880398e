#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "bench/fleet/fleet_agent.h"

namespace vorlu::fleet {

/// The most of something in a span of time.
struct Peak {
  double perSecond = 0;   ///< mean over the span
  std::int64_t when = 0;  ///< its beginning, seconds since the epoch
};

/// How many requests of each role came in each second of a time.
class ServerLoad {
 public:
  ServerLoad(std::int64_t start, std::int64_t seconds);

  /// Requests outside of the time aren't counted.
  void count(std::int64_t when, Role role, std::uint32_t amount = 1);
  std::uint64_t total(Role role) const;
  /// The busiest `span` seconds of one role.
  Peak peak(Role role, std::int64_t span) const;
  /// The busiest `span` seconds of all roles together.
  Peak peak(std::int64_t span) const;
  /// Requests in an hour of the time.
  std::uint64_t inHour(Role role, std::int64_t hour) const;

 private:
  using Seconds = std::vector<std::uint32_t>;
  Peak peakOf(const Seconds& seconds, std::int64_t span) const;

  std::int64_t start_;
  std::array<Seconds, roleCount> counts_;
};

}  // namespace vorlu::fleet
