#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace vorlu::fleet {

/// A time in which a Mac is awake and in the network, seconds since the epoch.
struct Awake {
  std::int64_t from = 0;
  std::int64_t to = 0;
};

using Random = std::mt19937_64;

/// When an office's laptop is open, over days that begin with a Monday at `start` (midnight of its own zone): from
/// about nine to half past five with or without a lunch break, now and then in the evening or at the weekend.
std::vector<Awake> openLaptop(Random& random, std::int64_t start, int days);

/// When the system starts a job with an interval: each `interval` seconds from `boot` on while the Mac is awake. The
/// starts that fell into a sleep become one, at its end.
void forEachStart(const std::vector<Awake>& awake, std::int64_t boot, std::int64_t interval,
                  const std::function<void(std::int64_t when)>& start);

}  // namespace vorlu::fleet
