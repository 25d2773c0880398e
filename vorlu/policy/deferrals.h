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

/// Settles the text that a reset stores: the limit, or "N/A" where the profile knows no limit.
void resolveDeferralLimit(Vorlu& vorlu);

/// Sets up the deferral state of a run before any prompt: the text that a reset stores, a stored count that fits the
/// mode, and `runData.deferCountRemaining()`. Logs what is configured and left.
void prepareDeferralState(Vorlu& vorlu);

/// The user chose to defer: counts it, dates compliance back by 15 days, tells Jamf Pro and ends the process with 0.
[[noreturn]] void recordDeferral(Vorlu& vorlu);
/// What the death of a prompt costs its user.
enum class PromptDeath {
  countsAsDeferral,
  countsNothing,  ///< in Self Service, which leaves the stored state alone
};
/// The initial prompt died with this exit text: ends the process with 0.
[[noreturn]] void recordAbnormalPromptExit(Vorlu& vorlu, const std::string& exitText, PromptDeath death);

}  // namespace vorlu
