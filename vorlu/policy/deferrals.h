#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vorlu/state/run_data.h"

namespace vorlu {

struct Vorlu;

/// How often a user may put updates off.
enum class DeferralMode {
  limited,    ///< "specifyDeferralLimit"
  unlimited,  ///< "disableDeferralLimit"
  disabled,   ///< "disableDeferrals"
  other,      ///< any other text: neither counted nor offered
};
/// By `deferralOption`, compared exactly.
DeferralMode deferralModeOf(std::string_view option);

/// What a run's set-up has to do with the stored count.
enum class DeferralSetUp {
  keep,
  unreadable,         ///< no count, or one that is no number: starts afresh, as an update activity
  notLimitedBefore,   ///< a limit is new: the count starts afresh
  switchesFromLimit,  ///< the limit is gone: no count any more, as an update activity
};
/// `file` is empty when run data can't be read.
DeferralSetUp deferralSetUp(DeferralMode mode, const std::optional<RunDataFile>& file);

/// Sets up the deferral state of a run before any prompt: the text that a reset stores, a stored count that fits the
/// mode, and `runData.deferCountRemaining()`. Logs what is configured and left.
void prepareDeferralState(Vorlu& vorlu);

/// The user chose to defer: counts it, dates compliance back by 15 days, tells Jamf Pro and ends the process with 0.
[[noreturn]] void recordDeferral(Vorlu& vorlu);
/// The initial prompt died with this exit text: counts like a deferral, and ends the process with 0.
[[noreturn]] void recordAbnormalPromptExit(Vorlu& vorlu, const std::string& exitText);

}  // namespace vorlu
