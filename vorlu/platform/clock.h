#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace vorlu {

/// Seconds since the Unix epoch, with their fraction.
using Seconds = double;

/// Time zones the agent computes in.
enum class Zone {
  local,   ///< the Mac's own zone
  london,  ///< "Europe/London": the catalog windows
};

/// Calendar fields of a moment in one zone.
struct CalendarFields {
  int year = 0;
  int month = 0;  ///< 1 to 12
  int day = 0;    ///< 1 to 31
  int hour = 0;   ///< 0 to 23
  int minute = 0;
  int second = 0;
  int weekday = 0;  ///< 1 Sunday to 7 Saturday
};

/// Wall clock, calendar and waiting. Stands for NSDate, NSCalendar, NSDateFormatter and sleep.
class Clock {
 public:
  virtual ~Clock() = default;

  virtual Seconds now() = 0;
  /// Throws `Terminated` when the agent is asked to end meanwhile.
  virtual void sleep(std::chrono::milliseconds duration) = 0;

  /// NSDateFormatter with locale "en_US_POSIX" in the Mac's zone; `pattern` is an ICU date pattern.
  virtual std::string format(Seconds when, std::string_view pattern) = 0;
  virtual CalendarFields fields(Seconds when, Zone zone) = 0;
  /// The moment at which the wall clock of `zone` shows `hour`:00 (0 to 24) on the day of `when`; nothing when the
  /// calendar can't tell.
  virtual std::optional<Seconds> hourOfDay(Seconds when, int hour, Zone zone) = 0;
};

}  // namespace vorlu
