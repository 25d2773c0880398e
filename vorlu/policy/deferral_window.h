#pragma once

#include <cstdint>

namespace vorlu {

struct Vorlu;

/// End of a deferral of `minutes`, in seconds since the epoch.
std::int64_t deferralEnd(std::int64_t lastRun, std::int64_t minutes);
/// A deferral has elapsed at exactly its end.
bool isDeferralElapsed(std::int64_t end, std::int64_t now);

/// Logs "Last deferral: …" and "Deferral end time: …", dates in UTC, of the scheduled and of a forced update.
void logDeferralTimes(Vorlu& vorlu, std::int64_t lastDeferral, std::int64_t end);

/// Whether the deferral of a recurring prompt has elapsed, by the `LastRun` that this process first read and the window
/// of the patch day or of the run frequency. Logged; false ends the flow with 0.
bool checkDeferralWindow(Vorlu& vorlu, bool patchDay);

}  // namespace vorlu
