#include "bench/fleet/presence.h"

#include <algorithm>

namespace vorlu::fleet {
namespace {

constexpr std::int64_t hour = 3600;
constexpr std::int64_t day = 24 * hour;
constexpr std::int64_t networkAfterSleep = 2;  // seconds

/// Seconds around a time of the day, in minutes of spread.
std::int64_t about(Random& random, double hours, double spreadMinutes) {
  std::normal_distribution<double> times(hours * 3600, spreadMinutes * 60);
  return static_cast<std::int64_t>(times(random));
}

bool happens(Random& random, double probability) {
  return std::bernoulli_distribution(probability)(random);
}

void addOfficeDay(Random& random, std::int64_t midnight, std::vector<Awake>& awake) {
  const std::int64_t open = midnight + about(random, 9, 35);
  const std::int64_t close = midnight + about(random, 17.5, 50);
  if (!happens(random, 0.5)) {
    awake.push_back({open, close});
  } else {
    const std::int64_t lunch = midnight + about(random, 12.5, 20);
    awake.push_back({open, lunch});
    awake.push_back({lunch + about(random, 0.7, 10), close});
  }
  if (!happens(random, 0.25)) return;
  const std::int64_t evening = midnight + about(random, 20.5, 60);
  awake.push_back({evening, evening + about(random, 1, 20)});
}

}  // namespace

std::vector<Awake> openLaptop(Random& random, std::int64_t start, int days) {
  std::vector<Awake> awake;
  for (int number = 0; number < days; ++number) {
    const std::int64_t midnight = start + number * day;
    if (number % 7 < 5) {
      if (happens(random, 0.92)) addOfficeDay(random, midnight, awake);
    } else if (happens(random, 0.15)) {
      const std::int64_t open = midnight + about(random, 12, 120);
      awake.push_back({open, open + about(random, 1.5, 30)});
    }
  }
  // The tails of the spreads may overlap or turn round.
  std::int64_t last = start;
  for (Awake& time : awake) {
    time.from = std::max(time.from, last);
    time.to = std::max(time.to, time.from);
    last = time.to;
  }
  return awake;
}

void forEachStart(const std::vector<Awake>& awake, std::int64_t boot, std::int64_t interval,
                  const std::function<void(std::int64_t when)>& start) {
  std::int64_t next = boot + interval;
  for (const Awake& time : awake) {
    if (next < time.from && time.from + networkAfterSleep < time.to) {
      start(time.from + networkAfterSleep);
      next += (time.from + networkAfterSleep - next) / interval * interval + interval;
    }
    for (; next < time.to; next += interval) start(next);
  }
}

}  // namespace vorlu::fleet
