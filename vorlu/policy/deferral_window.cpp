#include "vorlu/policy/deferral_window.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/state/format_date.h"
#include "vorlu/vorlu.h"

namespace vorlu {

std::int64_t deferralEnd(std::int64_t lastRun, std::int64_t minutes) {
  // Values that no clock and no profile means are kept small enough to reckon with.
  constexpr std::int64_t limit = std::int64_t{1} << 50;
  return std::clamp(lastRun, -limit, limit) + std::clamp(minutes, -limit, limit) * 60;
}

bool isDeferralElapsed(std::int64_t end, std::int64_t now) {
  return now >= end;
}

void logDeferralTimes(Vorlu& vorlu, std::int64_t lastDeferral, std::int64_t end) {
  vorlu.log(fmt::format("Last deferral: {}", describeDate(lastDeferral)));
  vorlu.log(fmt::format("Deferral end time: {}", describeDate(end)));
}

bool checkDeferralWindow(Vorlu& vorlu, bool patchDay) {
  const RunPrefs& prefs = vorlu.preferences.scheduled().runFrequency;
  const std::int64_t lastRun = vorlu.runData.kept(&RunDataFile::LastRun);
  const std::int64_t end = deferralEnd(lastRun, patchDay ? prefs.patchDayDeferralWindow : prefs.deferralWindow);
  logDeferralTimes(vorlu, lastRun, end);
  const bool elapsed = isDeferralElapsed(end, static_cast<std::int64_t>(vorlu.platform.clock.now()));
  vorlu.log(elapsed ? "The deferral period has elapsed. Continuing..." : "The deferral period has not elapsed.");
  return elapsed;
}

}  // namespace vorlu
