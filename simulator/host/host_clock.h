#pragma once

#include <functional>

namespace vorlu::simulator {

/// The Mac's clock as the host file's "clock" sets it: `mac + (real time - real) * rate`. Without that key the Mac's
/// time is the machine's.
struct HostClock {
  double real = 0;  ///< seconds since the epoch
  double mac = 0;   ///< seconds since the epoch
  double rate = 1;  ///< Mac seconds in a real second

  /// Reads the host file anew; a missing or broken file gives real time.
  static HostClock read();
  /// Seconds since the epoch, with their fraction.
  double now() const;
};

/// Waits until `seconds` of the Mac have gone by. The host file is read again meanwhile, so that a clock that is set
/// forward ends the wait. `wake` is asked every few milliseconds and ends the wait early with true.
void macSleep(double seconds, const std::function<bool()>& wake = {});

}  // namespace vorlu::simulator
