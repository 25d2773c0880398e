#include "vorlu/policy/update_pass.h"

#include <fmt/format.h>

#include "vorlu/detection/find_app.h"
#include "vorlu/detection/update_check.h"
#include "vorlu/install/pipeline.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

InstallOutcome update(Vorlu& vorlu, const ApplicationInventory& record, const PassSettings& settings) {
  vorlu.updates.currentUpdate = record;
  InstallRequest request = updateRequest(record);
  request.recordFailure = true;
  request.checkRunning = true;
  request.cacheOnly = settings.cacheOnly;
  return runInstallPipeline(vorlu, request);
}

/// Nothing for an app that was passed over.
std::optional<InstallOutcome> updateOne(Vorlu& vorlu, const ApplicationInventory& record,
                                        const PassSettings& settings) {
  if (!findApp(vorlu, record.appName)) {
    vorlu.log(fmt::format("Error: {} was not found in the Vorlu App catalog. Skipping the update...", record.appName));
    return std::nullopt;
  }
  if (vorlu.modes.testingBlueprints && vorlu.currentApp.skipServerVerification) {
    vorlu.log(fmt::format("Server verification for {} is not enabled. Skipping update test...", record.appName));
    return std::nullopt;
  }
  const std::string serverName = vorlu.currentApp.serverName;
  const InstallOutcome outcome = update(vorlu, record, settings);
  if (outcome == InstallOutcome::installed) noteUpdate(vorlu.updates, serverName, record.appName);
  if (outcome == InstallOutcome::failed) vorlu.updates.failedAppNames.push_back(record.appName);
  return outcome;
}

}  // namespace

PassResult runUpdatePass(Vorlu& vorlu, const PassSettings& settings) {
  checkForUpdates(vorlu, "", false);
  // The list itself may be filled anew while an app is being installed.
  const std::vector<ApplicationInventory> due = vorlu.updates.pendingUpdates;
  PassResult result;
  result.nothingPending = due.empty();
  for (const ApplicationInventory& record : due) {
    const auto outcome = updateOne(vorlu, record, settings);
    if (outcome == InstallOutcome::inUse) result.inUse = true;
    if (outcome != InstallOutcome::installed) result.allInstalled = false;
  }
  vorlu.updates.passDone = true;
  return result;
}

void initialiseUpdates(Vorlu& vorlu) {
  vorlu.log("Checking for updates. Please wait...");
  const PassResult pass = runUpdatePass(vorlu, {});
  if (!pass.nothingPending && pass.allInstalled) recordCompliance(vorlu);
}

}  // namespace vorlu
