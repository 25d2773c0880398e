#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "vorlu/detection/update_state.h"
#include "vorlu/platform/clock.h"
#include "vorlu/state/preferences.h"
#include "vorlu/state/run_data.h"

/// What the report tells of updates, prompts and deferrals: stored values in the report's words.
namespace vorlu {

/// What became of updates at last; a deferral counts most, a failure of this run next. `runData` is nothing when the
/// file can't be read.
std::string lastRunStatus(const std::optional<RunDataFile>& runData, const UpdateState& updates);

/// When a user may be asked next, in seconds since the epoch. Under a frequency that lies behind when nobody could be
/// asked in time; under a patch day it is a midnight: today's, while the patch day's own run is still to come. Nothing
/// before the first run (`lastRun` 0), or with a scheme that gives no date.
std::optional<std::int64_t> nextPromptTime(Clock& clock, const RunPrefs& prefs, std::int64_t lastRun);

bool areDeferralsAllowed(const DeferralPrefs& prefs);
/// The number, "No limit" or "Deferrals disabled".
std::string deferralLimitShown(const DeferralPrefs& prefs);

}  // namespace vorlu
