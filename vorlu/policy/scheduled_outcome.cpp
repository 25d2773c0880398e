#include "vorlu/policy/scheduled_outcome.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "vorlu/detection/update_check.h"
#include "vorlu/policy/frequency_calculation.h"
#include "vorlu/prompts/completion_prompt.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/prompts/failure_prompt.h"
#include "vorlu/prompts/up_to_date_prompt.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/receipts.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

const ScheduledUpdatesPrefs& prefs(Vorlu& vorlu) {
  return vorlu.preferences.scheduled();
}

void resetCountInSelfService(Vorlu& vorlu) {
  if (deferralModeOf(prefs(vorlu).deferralConfiguration.deferralOption) == DeferralMode::limited)
    updateRunData(vorlu, RunDataSelector::resetDeferrals);
}

/// Under a frequency the interval goes on from the last activity; a patch day is done.
RunDataSelector resetWithoutUpdates(Vorlu& vorlu) {
  return schemeOf(prefs(vorlu).runFrequency.runType) == Scheme::frequency ? RunDataSelector::resetDeferrals
                                                                          : RunDataSelector::resetDeferralsAndRun;
}

void resetDeferrals(Vorlu& vorlu, DeferralMode mode) {
  setCurrentRunType(vorlu, "N/A");
  updateRunData(vorlu, RunDataSelector::resetDeferralsAndRun);
  if (mode == DeferralMode::limited) {
    vorlu.log.logForJamf("All updates installed successfully. Deferrals have been reset.");
    vorlu.log("Deferrals reset");
  } else {
    vorlu.log.logForJamf("All updates installed successfully.");
  }
}

void concludeSuccess(Vorlu& vorlu, const UpdateConclusion& conclusion) {
  vorlu.log("All cached updates installed successfully.");
  // An app that failed without having been in use still waits for its update.
  if (vorlu.updates.failedUpdates.empty()) recordCompliance(vorlu);
  removeMissedUpdateReceipt(vorlu);
  resetDeferrals(vorlu, conclusion.deferralMode);
  removeCompleteReceipt(vorlu);
  if (conclusion.settings.displayCompletePrompt && somebodyAtConsole(vorlu))
    showCompletePrompt(
        vorlu, UpdateCompletePrompt{conclusion.completeMessage, conclusion.dialogIcon, conclusion.settings.position});
  vorlu.modes.runExitStatus = 0;
}

std::vector<PromptApp> failedApps(Vorlu& vorlu, const std::vector<ApplicationInventory>& updates) {
  const auto& names = vorlu.updates.failedAppNames;
  std::vector<ApplicationInventory> failed;
  std::copy_if(updates.begin(), updates.end(), std::back_inserter(failed), [&](const ApplicationInventory& update) {
    return std::find(names.begin(), names.end(), update.appName) != names.end();
  });
  return promptApps(vorlu, failed);
}

void logFailure(Vorlu& vorlu) {
  const auto& names = vorlu.updates.failedAppNames;
  if (names.size() == 1) {
    vorlu.log(fmt::format("Error installing the {} update. Review the Vorlu.log file for detailed information",
                          names.front()));
    vorlu.log.logForJamf(fmt::format(
        "Error: Couldn't install the {} update. Review the Vorlu.log file for detailed information", names.front()));
    return;
  }
  const std::string all = fmt::format("{}", fmt::join(names, ", "));
  vorlu.log(fmt::format("Failed updates: {}. Review the Vorlu.log file for detailed information", all));
  vorlu.log.logForJamf(fmt::format("Error: Couldn't install the following updates: {}", all));
}

void concludeFailure(Vorlu& vorlu, const UpdateConclusion& conclusion) {
  vorlu.log("Error: One or more update attempts failed. Informing the user...");
  setCurrentRunType(vorlu, "N/A");
  logFailure(vorlu);
  if (somebodyAtConsole(vorlu))
    showFailurePrompt(vorlu, prepareFailurePrompt(vorlu, failedApps(vorlu, conclusion.updates), conclusion.dialogIcon));
  vorlu.modes.runExitStatus = 1;
}

}  // namespace

void logFoundUpdates(Vorlu& vorlu, const std::vector<ApplicationInventory>& updates) {
  vorlu.log("Found cached updates.");
  vorlu.log(fmt::format("Number of pending updates: {}", updates.size()));
  for (const ApplicationInventory& update : updates) vorlu.log(fmt::format("{} needs to be updated", update.appName));
}

void endWithoutUpdates(Vorlu& vorlu, Trigger trigger, const std::string& dialogIcon) {
  setCurrentRunType(vorlu, "N/A");
  vorlu.log("No cached updates were found");
  if (trigger == Trigger::selfService) showUpToDatePrompt(vorlu, dialogIcon, [&] { resetCountInSelfService(vorlu); });
  vorlu.log.logForJamf("No pending updates were found on the configured patch day");
  vorlu.modes.runExitStatus = 0;
  if (trigger == Trigger::testPrompt) return;
  updateRunData(vorlu, resetWithoutUpdates(vorlu));
  removeMissedUpdateReceipt(vorlu);
}

void concludeUpdates(Vorlu& vorlu, const UpdateConclusion& conclusion) {
  vorlu.updates.updatesRan = true;
  if (vorlu.updates.failedAppNames.empty()) {
    concludeSuccess(vorlu, conclusion);
  } else {
    concludeFailure(vorlu, conclusion);
  }
  checkForUpdates(vorlu, "", false);
}

}  // namespace vorlu
