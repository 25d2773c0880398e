#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "vorlu/platform/clock.h"
#include "vorlu/state/log.h"
#include "vorlu/state/preferences.h"

namespace vorlu {

/// Whether an administrator lets updates run on a day.
enum class RunDay {
  notLimited,
  patchDayOverrides,  ///< the day is limited, but it is the patch day
  limited,
};
RunDay runDayVerdict(bool dayAllowed, bool isPatchDay);

/// Whether an administrator lets updates run at a time of the day. All but `outside` let them.
enum class RunTime {
  notLimited,  ///< start or end is missing
  invalid,     ///< a time that no clock shows
  sameTimes,   ///< start and end are one
  inside,
  outside,
};
/// `clockTime` is hours times 100 plus minutes, as is what the limits say once their colons are gone.
RunTime runTimeVerdict(const DayLimits& limits, int clockTime);

/// Both ends belong to a window within a day; one across midnight ends before its end.
bool isInsideWindow(int start, int end, int clockTime);

/// The run day gate: logs its reason; false ends the flow with 1. `patchDay` is the weekday that no day limitation
/// counts on, nothing where there is none.
bool passesRunDayGate(Log& log, Clock& clock, const RunLimits& limits, std::optional<std::int64_t> patchDay);

/// The run time gate of today: logs its reason; false ends the flow with 0.
bool passesRunTimeGate(Log& log, Clock& clock, const RunLimits& limits);

}  // namespace vorlu
