#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "vorlu/platform/clock.h"
#include "vorlu/platform/linux/icu_calendar.h"

namespace vorlu::test {

/// A clock in UTC that stands still until somebody sleeps. Sleeping takes no real time; it moves the clock on and plays
/// the events that fall due on the way, each at its own moment. Several threads may sleep; each moves the one clock.
class VirtualClock : public Clock {
 public:
  static constexpr Seconds defaultStart = 1772452800;  ///< 2026-03-02 12:00:00 UTC, a Monday

  Seconds now() override;
  /// Throws once the sleeps add up to 60 days: a waiting loop that never ends must not hang the tests.
  void sleep(std::chrono::milliseconds duration) override;
  std::string format(Seconds when, std::string_view pattern) override { return calendar_.format(when, pattern); }
  CalendarFields fields(Seconds when, Zone zone) override { return calendar_.fields(when, zone); }
  std::optional<Seconds> hourOfDay(Seconds when, int hour, Zone zone) override {
    return calendar_.hourOfDay(when, hour, zone);
  }

  /// Sets the time, playing nothing.
  void set(Seconds now);
  /// Moves on like a sleep, without noting one.
  void advance(Seconds duration);
  /// Plays `event` this many seconds from now. Events of the same moment come in the order they were given in.
  void at(Seconds fromNow, std::function<void()> event);
  /// All sleeps so far, in order.
  std::vector<std::chrono::milliseconds> sleeps();

 private:
  std::mutex mutex_;
  Seconds now_ = defaultStart;
  Seconds slept_ = 0;
  std::multimap<Seconds, std::function<void()>> events_;
  std::vector<std::chrono::milliseconds> sleeps_;
  IcuCalendar calendar_{"UTC"};
};

}  // namespace vorlu::test
