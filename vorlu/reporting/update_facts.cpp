#include "vorlu/reporting/update_facts.h"

#include <algorithm>
#include <limits>

#include "vorlu/detection/letter_case.h"
#include "vorlu/policy/frequency_calculation.h"

namespace vorlu {
namespace {

/// Whether nothing that may be updated is due, by this run's own look.
bool isUpToDate(const UpdateState& updates) {
  if (updates.compliantThisRun) return true;
  const bool sawAll = updates.pendingFrom == Walk::full || updates.pendingFrom == Walk::refresh;
  return sawAll && std::none_of(updates.pendingUpdates.begin(), updates.pendingUpdates.end(),
                                [](const ApplicationInventory& app) { return app.updatesAllowed; });
}

std::optional<std::int64_t> nextPatchDay(Clock& clock, std::int64_t patchDay, std::int64_t lastRun) {
  if (patchDay < 1 || patchDay > 7) return std::nullopt;
  const FrequencyCalculation calendar(clock);
  std::int64_t daysAhead = (patchDay - calendar.today() + 7) % 7;
  if (daysAhead == 0 && lastRun > calendar.startOfTodayTime()) daysAhead = 7;
  // From noon on no change of the clock leads to a neighbouring day.
  const std::int64_t noon = calendar.startOfTodayTime() + (24 * daysAhead + 12) * 3600;
  const std::optional<Seconds> midnight = clock.hourOfDay(static_cast<Seconds>(noon), 0, Zone::local);
  return midnight ? std::optional(static_cast<std::int64_t>(*midnight)) : std::nullopt;
}

}  // namespace

std::string lastRunStatus(const std::optional<RunDataFile>& runData, const UpdateState& updates) {
  if (!runData) return "Unknown";
  if (runData->UserDeferred.value_or(false)) return "User deferred";
  if (!updates.failedUpdates.empty()) return "Updates failed";
  return isUpToDate(updates) ? "Up to date" : "Updates pending";
}

std::optional<std::int64_t> nextPromptTime(Clock& clock, const RunPrefs& prefs, std::int64_t lastRun) {
  if (lastRun <= 0) return std::nullopt;
  switch (schemeOf(prefs.runType)) {
    case Scheme::frequency: {
      const FrequencyOption* option = findFrequencyOption(prefs.frequencyOption);
      if (!option || lastRun > std::numeric_limits<std::int64_t>::max() - option->seconds) return std::nullopt;
      return lastRun + option->seconds;
    }
    case Scheme::patchDay:
      return nextPatchDay(clock, prefs.patchDay, lastRun);
    case Scheme::unknown:
      break;
  }
  return std::nullopt;
}

bool areDeferralsAllowed(const DeferralPrefs& prefs) {
  return !isInAnyCase(prefs.deferralOption, "disabledeferrals");
}

std::string deferralLimitShown(const DeferralPrefs& prefs) {
  if (!areDeferralsAllowed(prefs)) return "Deferrals disabled";
  if (isInAnyCase(prefs.deferralOption, "disabledeferrallimit")) return "No limit";
  return std::to_string(prefs.specifyLimit);
}

}  // namespace vorlu
