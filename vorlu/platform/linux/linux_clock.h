#pragma once

#include "vorlu/platform/clock.h"
#include "vorlu/platform/linux/icu_calendar.h"
#include "vorlu/platform/linux/linux_host.h"

namespace vorlu {

/// Real time, or the host file's clock where it has one.
class LinuxClock : public Clock {
 public:
  explicit LinuxClock(LinuxHost& host) : host_(host) {}

  Seconds now() override;
  /// By the Mac's time: a clock that runs at rate 60 makes a minute last a second.
  void sleep(std::chrono::milliseconds duration) override;
  std::string format(Seconds when, std::string_view pattern) override { return calendar_.format(when, pattern); }
  CalendarFields fields(Seconds when, Zone zone) override { return calendar_.fields(when, zone); }
  std::optional<Seconds> hourOfDay(Seconds when, int hour, Zone zone) override {
    return calendar_.hourOfDay(when, hour, zone);
  }

 private:
  LinuxHost& host_;
  IcuCalendar calendar_;
};

}  // namespace vorlu
