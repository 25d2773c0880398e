#include "vorlu/policy/finish_forced_update.h"

#include <fmt/format.h>

#include "vorlu/detection/update_check.h"
#include "vorlu/prompts/completion_prompt.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/prompts/failure_prompt.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/random_number.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

void relaunch(Vorlu& vorlu, const ForcedMark& mark) {
  if (!vorlu.preferences.forced().autoRelaunchApps) {
    vorlu.log(
        fmt::format("Skipping auto-relaunch for {} as auto-relaunch is disabled for forced updates", mark.appName));
    return;
  }
  const std::string& path = mark.update.installedPath;
  vorlu.log(fmt::format("Auto-relaunching {} at path {}...", mark.appName, path));
  openAsConsoleUser(vorlu, "-g -a ", path);
}

void tellUser(Vorlu& vorlu, const ForcedSight& sight) {
  if (!vorlu.preferences.forced().displayCompletePrompt) return;
  showCompletePrompt(vorlu, UpdateCompletePrompt{sight.completeMessage, sight.icon, sight.position});
}

void delayNextCalls(Vorlu& vorlu) {
  vorlu.log("Starting random delay...");
  vorlu.platform.clock.sleep(std::chrono::seconds(50 + randomBelow(vorlu.platform.security, 40)));
  vorlu.log("End of random delay");
}

void endReceipt(Vorlu& vorlu) {
  runJamfInventory(vorlu);
  setCurrentRunType(vorlu, "N/A");
}

}  // namespace

void finishSuccessfulUpdate(Vorlu& vorlu, const ForcedMark& mark, const ForcedSight* sight) {
  const std::string success = fmt::format("The {} forced update was successful", mark.appName);
  vorlu.log(success);
  vorlu.log.logForJamf(success);
  recordCompliance(vorlu);
  if (sight != nullptr && sight->wasQuit) relaunch(vorlu, mark);
  if (sight != nullptr) tellUser(vorlu, *sight);
  vorlu.log(fmt::format("Removing {} update receipt...", mark.appName));
  removeForcedUpdateReceipt(vorlu, mark.app);
  endReceipt(vorlu);
  delayNextCalls(vorlu);
}

void finishFailedUpdate(Vorlu& vorlu, ForcedMark& mark, const ForcedSight* sight) {
  if (sight != nullptr) {
    if (sight->wasQuit) relaunch(vorlu, mark);
    vorlu.log(fmt::format("The {} update failed. Informing user...", mark.appName));
    showFailurePrompt(vorlu, prepareForcedFailurePrompt(vorlu, mark.appName));
  }
  vorlu.log(fmt::format("The {} forced update failed. The forced update will retry later...", mark.appName));
  const std::string error =
      fmt::format("Error: Could not install the {} forced update. Review the Vorlu.log file for detailed information",
                  mark.appName);
  vorlu.log.logForJamf(error);
  vorlu.log(error);
  mark.receipt.lastRun = static_cast<std::int64_t>(vorlu.platform.clock.now());
  updateReceipt(vorlu, mark.path, mark.receipt);
  endReceipt(vorlu);
}

}  // namespace vorlu
