#pragma once

#include <cmath>
#include <string>

#include "vorlu/platform/clock.h"

namespace vorlu::fleet {

/// A simulated Mac's clock in a winter week, when London keeps UTC and no zone changes its offset: plain arithmetic,
/// since a fleet asks it some hundred million times. It moves only when somebody sleeps.
class FleetClock : public Clock {
 public:
  explicit FleetClock(std::int64_t localOffset) : localOffset_(localOffset) {}

  Seconds now() override { return now_; }
  std::int64_t time() const { return static_cast<std::int64_t>(now_); }
  void set(std::int64_t now) { now_ = static_cast<Seconds>(now); }
  void sleep(std::chrono::milliseconds duration) override { now_ += static_cast<Seconds>(duration.count()) / 1000; }
  std::string format(Seconds, std::string_view) override { return {}; }
  /// Without the date, which no decision asks for.
  CalendarFields fields(Seconds when, Zone zone) override {
    const auto second = static_cast<std::int64_t>(std::floor(when)) + offset(zone);
    const std::int64_t days = second / day;
    const auto ofDay = static_cast<int>(second % day);
    CalendarFields fields;
    fields.hour = ofDay / 3600;
    fields.minute = ofDay / 60 % 60;
    fields.second = ofDay % 60;
    fields.weekday = static_cast<int>((days + 4) % 7) + 1;  // the epoch was a Thursday
    return fields;
  }
  std::optional<Seconds> hourOfDay(Seconds when, int hour, Zone zone) override {
    const auto second = static_cast<std::int64_t>(std::floor(when)) + offset(zone);
    return static_cast<Seconds>(second - second % day - offset(zone) + hour * std::int64_t{3600});
  }

 private:
  static constexpr std::int64_t day = 86400;
  std::int64_t offset(Zone zone) const { return zone == Zone::local ? localOffset_ : 0; }

  std::int64_t localOffset_;  ///< seconds east of UTC
  Seconds now_ = 0;
};

}  // namespace vorlu::fleet
