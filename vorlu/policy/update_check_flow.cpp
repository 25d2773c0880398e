#include "vorlu/policy/update_check_flow.h"

#include <fmt/format.h>

#include "vorlu/detection/find_app.h"
#include "vorlu/detection/update_check.h"
#include "vorlu/install/component_update.h"
#include "vorlu/install/icon_sync.h"
#include "vorlu/install/pipeline.h"
#include "vorlu/install/placement.h"
#include "vorlu/install/self_update.h"
#include "vorlu/state/run_data.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// What became of the pending updates.
struct PassResult {
  bool nothingPending = false;
  bool inUse = false;  ///< an application was left alone because it ran
};

void announce(Vorlu& vorlu, bool hourly) {
  setCurrentRunType(vorlu, hourly ? "hourlyUpdateCheck" : "manualUpdateCheck");
  vorlu.log(hourly ? "Checking for new updates..." : "Checking for updates. Please wait...");
}

InstallOutcome update(Vorlu& vorlu, const ApplicationInventory& record) {
  vorlu.updates.currentUpdate = record;
  InstallRequest request;
  request.appName = record.appName;
  request.installedPath = record.installedPath;
  request.installedVersion = record.installedVersion;
  request.operationLabel = "update";
  request.checkRunning = true;
  return runInstallPipeline(vorlu, request);
}

void updateOne(Vorlu& vorlu, const ApplicationInventory& record, PassResult& result) {
  if (!findApp(vorlu, record.appName)) {
    vorlu.log(fmt::format("Error: {} was not found in the Vorlu App catalog. Skipping the update...", record.appName));
    return;
  }
  if (vorlu.modes.testingBlueprints && vorlu.currentApp.skipServerVerification) {
    vorlu.log(fmt::format("Server verification for {} is not enabled. Skipping update test...", record.appName));
    return;
  }
  if (update(vorlu, record) == InstallOutcome::inUse) result.inUse = true;
}

PassResult updateWhatIsPending(Vorlu& vorlu) {
  PassResult result;
  result.nothingPending = vorlu.updates.pendingUpdates.empty();
  if (vorlu.updates.pendingFrom != Walk::full || !isAlone(vorlu)) return result;
  // The list itself may be filled anew while an app is being installed.
  const std::vector<ApplicationInventory> due = vorlu.updates.pendingUpdates;
  for (const ApplicationInventory& record : due) updateOne(vorlu, record, result);
  return result;
}

/// An app in use still waits for its update, so the computer isn't compliant yet; one that failed doesn't count. A
/// check that found nothing pending has stored the date already.
void noteCompliance(Vorlu& vorlu, const PassResult& pass) {
  if (pass.nothingPending) {
    vorlu.updates.compliantThisRun = true;
  } else if (!pass.inUse) {
    recordCompliance(vorlu);
  }
}

/// The agent itself, its component and the icons of its prompts.
void keepAgentCurrent(Vorlu& vorlu) {
  if (vorlu.preferences.general().autoUpdate && isAlone(vorlu)) {
    selfUpdate(vorlu);
    updateComponents(vorlu, true);
  }
  syncIcons(vorlu);
}

}  // namespace

void updateCheckFlow(Vorlu& vorlu, bool hourly) {
  announce(vorlu, hourly);
  recoverPlacement(vorlu);
  checkForUpdates(vorlu, "", false);
  const PassResult pass = updateWhatIsPending(vorlu);
  noteCompliance(vorlu, pass);
  checkForUpdates(vorlu, "", true);
  vorlu.modes.runStage = "N/A";
  if (!hourly) return;
  vorlu.updates.hourlyCheckRan = true;
  keepAgentCurrent(vorlu);
  updateRunData(vorlu, RunDataSelector::nextUpdateAttempt);
}

}  // namespace vorlu
