#pragma once

#include <cstdint>

namespace vorlu {

// When the steps of the recurring run are due. Times are whole seconds since the Unix epoch.

/// How long after a report the next is due, in seconds.
inline constexpr std::int64_t reportInterval = 3600;

/// How many lengths the time between two hourly checks has.
inline constexpr std::uint32_t hourlyDraws = 18;
/// Seconds from one hourly check to the next: 63 to 80 minutes, by a number from 0 to `hourlyDraws` - 1 drawn at
/// random, so that a fleet's calls to the server spread over time.
std::int64_t hourlyInterval(std::int64_t draw);

enum class HourlyStep { disabled, early, due };
HourlyStep hourlyStepAt(std::int64_t now, bool enabled, std::int64_t nextAttempt);

enum class ReportStep { none, report, reportAndInventory };
/// `worked`: this run checked for updates or made some. Any other run reports once `reportDue` has passed.
ReportStep reportStepAt(std::int64_t now, bool worked, std::int64_t reportDue);

}  // namespace vorlu
