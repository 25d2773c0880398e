#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vorlu/platform/clock.h"

namespace vorlu {

/// Dates by ICU: the patterns, week years and time zones are the ones a Mac has. Safe for several threads. Nothing is
/// loaded before the first question.
class IcuCalendar {
 public:
  /// `localZone` is an Olson name; empty takes the machine's zone (TZ, then /etc/localtime).
  explicit IcuCalendar(std::string localZone = "");
  ~IcuCalendar();

  std::string format(Seconds when, std::string_view pattern);
  CalendarFields fields(Seconds when, Zone zone);
  /// The clock's contract. An hour that a zone skips gives the end of the gap, one that it repeats the first of both.
  std::optional<Seconds> hourOfDay(Seconds when, int hour, Zone zone);

 private:
  struct State;
  std::string localZone_;
  std::unique_ptr<State> state_;
};

}  // namespace vorlu
