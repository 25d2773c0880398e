#include "vorlu/install/install_command.h"

#include <fmt/format.h>

#include <optional>
#include <string_view>

#include "vorlu/detection/find_app.h"
#include "vorlu/detection/update_check.h"
#include "vorlu/install/install_permission.h"
#include "vorlu/install/install_window.h"
#include "vorlu/install/pipeline.h"
#include "vorlu/install/progress_bar.h"
#include "vorlu/install/server_call_limit.h"
#include "vorlu/install/version_mismatch.h"
#include "vorlu/platform/termination.h"
#include "vorlu/prompts/progress_window.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

/// One install on request: what its steps hand on.
struct Install {
  Vorlu& vorlu;
  const std::string& identifier;
  bool showProgress;
  std::string appName;
  std::string serverName;
};

/// Tells other agents how far the install is.
void enterPhase(Install& install, std::string_view phase) {
  setCurrentRunType(install.vorlu,
                    fmt::format("appInstall{}{}:{}", install.showProgress ? "Prog" : "", phase, install.serverName));
}

[[noreturn]] void endNotFound(Install& install) {
  Vorlu& vorlu = install.vorlu;
  setCurrentRunType(vorlu, "N/A");
  vorlu.log(fmt::format("Error: Specified App \"{}\" was not found in the Vorlu App catalog.", install.identifier));
  vorlu.log("Please refer to the \"Installation Format\" column in the App Catalog for the correct App format.");
  if (install.showProgress) tellCancelled(vorlu, CancelReason::notInCatalog, install.identifier);
  endRun(vorlu, 1);
}

/// The catalog at hand first; then the server's, unless today's look-ups are used up.
void selectApp(Install& install) {
  Vorlu& vorlu = install.vorlu;
  bool found = findApp(vorlu, install.identifier);
  if (!found && !vorlu.modes.testingBlueprints && takeServerCall(vorlu))
    found = findApp(vorlu, install.identifier, CatalogSource::online);
  if (!found) endNotFound(install);
  install.appName = vorlu.currentApp.appName;
  install.serverName = vorlu.currentApp.serverName;
}

[[noreturn]] void endNotPermitted(Install& install, InstallPermission permission) {
  Vorlu& vorlu = install.vorlu;
  const std::string& appName = install.appName;
  setCurrentRunType(vorlu, "N/A");
  if (permission == InstallPermission::onBothLists) {
    vorlu.log(
        fmt::format("Error: {0} was included in the allowed Apps list but was also found in the excluded Apps "
                    "list. Please contact your administrator and ask for {0} to be removed from the excluded "
                    "install list.",
                    appName));
  } else {
    vorlu.log(
        fmt::format("Error: {0} was not included in the list of Apps allowed for installation. Please contact "
                    "your administrator and ask for {0} to be added to the allowed install list{1}",
                    appName, install.showProgress ? "" : "."));
  }
  vorlu.log.logForJamf(fmt::format(
      "Error: User initiated a {0} install, but {0} is not included in the list of approved Apps", appName));
  if (install.showProgress) {
    vorlu.log("Informing user...");
    tellCancelled(vorlu, CancelReason::notEnabled, appName);
  }
  runJamfInventory(vorlu);
  endRun(vorlu, 1);
}

void requirePermission(Install& install) {
  const GeneralOptionPrefs& preferences = install.vorlu.preferences.general();
  const InstallPermission permission = installPermission(install.vorlu.currentApp.appIdentifier, install.serverName,
                                                         preferences.allowedAppInstalls.value_or(TextList{}),
                                                         preferences.excludedAppInstalls.value_or(TextList{}));
  if (permission != InstallPermission::allowed) endNotPermitted(install, permission);
}

/// Where the app is already. A bundle that lies at another of its places doesn't hinder an install.
std::optional<std::string> alreadyInstalledAt(Vorlu& vorlu) {
  const CurrentApp& app = vorlu.currentApp;
  FileManager& files = vorlu.platform.files;
  if (!app.appPath.empty() && files.exists(app.appPath)) return app.appPath;
  if (app.appType != "appBundle" && !app.installedPath.empty() && files.exists(app.installedPath))
    return app.installedPath;
  return std::nullopt;
}

void refuseReinstall(Install& install) {
  Vorlu& vorlu = install.vorlu;
  const auto path = alreadyInstalledAt(vorlu);
  if (!path) return;
  vorlu.log(fmt::format("{} is already installed at path: {}", install.appName, *path));
  vorlu.log("Cancelling the install...");
  if (install.showProgress) closeCancelledWindow(vorlu, 2);
  setCurrentRunType(vorlu, "N/A");
  if (install.showProgress) {
    vorlu.log("Informing user...");
    tellCancelled(vorlu, CancelReason::alreadyInstalled, install.appName);
  }
  endRun(vorlu, 1);
}

void announceInstall(Install& install) {
  Vorlu& vorlu = install.vorlu;
  vorlu.log(fmt::format("{} found in the Vorlu App catalog.", install.appName));
  vorlu.log(fmt::format("Initialising the {} installation", install.appName));
  enterPhase(install, "Run");
  vorlu.log(fmt::format("Initialising {} install...", install.appName));
}

/// What a check of this process left pending for the app goes first. A list that this empties makes the computer
/// compliant.
void installPendingUpdates(Install& install) {
  Vorlu& vorlu = install.vorlu;
  const std::vector<ApplicationInventory> due = vorlu.updates.pendingUpdates;
  for (const ApplicationInventory& record : due) {
    if (record.appName != install.appName) continue;
    if (vorlu.modes.testingBlueprints && vorlu.currentApp.skipServerVerification) {
      vorlu.log(fmt::format("Server verification for {} is not enabled. Skipping update test...", record.appName));
      continue;
    }
    vorlu.updates.currentUpdate = record;
    InstallRequest request = updateRequest(record);
    request.interactive = install.showProgress;
    request.checkRunning = true;
    if (runInstallPipeline(vorlu, request) != InstallOutcome::installed) continue;
    std::erase_if(vorlu.updates.pendingUpdates,
                  [&](const ApplicationInventory& left) { return left.appName == install.appName; });
  }
  if (!due.empty() && vorlu.updates.pendingUpdates.empty()) recordCompliance(vorlu);
}

InstallOutcome runPipeline(Install& install) {
  InstallRequest request;
  request.appName = install.appName;
  request.installedVersion = "N/A";
  request.operationLabel = "install";
  request.interactive = install.showProgress;
  request.enforceInstallable = true;
  return runInstallPipeline(install.vorlu, request);
}

void runPostInstallTasks(Install& install) {
  enterPhase(install, "Complete");
  install.vorlu.log("Running post install tasks...");
  if (!install.showProgress) return;
  stepBar(install.vorlu);
  install.vorlu.platform.clock.sleep(seconds(1));
  stepBar(install.vorlu);
}

/// Where the app lies now; nothing when the install came to nothing.
std::optional<std::string> installedPath(Install& install, InstallOutcome outcome) {
  Vorlu& vorlu = install.vorlu;
  if (!findApp(vorlu, install.appName) || outcome != InstallOutcome::installed) return std::nullopt;
  const std::string& path = vorlu.currentApp.installedPath;
  return !path.empty() && vorlu.platform.files.exists(path) ? std::optional(path) : std::nullopt;
}

void closeWindow(Install& install, const std::string& text) {
  showProgressText(install.vorlu, text);
  install.vorlu.platform.clock.sleep(seconds(1));
}

[[noreturn]] void endFailed(Install& install) {
  Vorlu& vorlu = install.vorlu;
  const std::string notFound = fmt::format("Error: {} was not found after the install attempt at path: {}",
                                           install.appName, vorlu.currentApp.appPath);
  vorlu.log(notFound);
  vorlu.log(fmt::format("The {} install was not successful", install.appName));
  vorlu.log.logForJamf(notFound + ". Please review the Vorlu.log file for detailed error information");
  if (install.showProgress) {
    closeWindow(install, fmt::format("{} Install Failed ❌", install.appName));
    writeDialogCommand(vorlu, "quit:");
    vorlu.log("Displaying install failure message to the user...");
    tellCancelled(vorlu, CancelReason::installFailed, install.appName);
  }
  runJamfInventory(vorlu);
  endRun(vorlu, 1);
}

void tellSuccess(Install& install, const std::string& path) {
  Vorlu& vorlu = install.vorlu;
  vorlu.log(fmt::format("{} found at path: {}", install.appName, path));
  vorlu.log(fmt::format("The {} install was successful.", install.appName));
  if (!install.showProgress) return;
  closeWindow(install, fmt::format("{} Install Complete ✅", install.appName));
  closeProgressWindow(vorlu);
  offerLaunch(vorlu, path);
}

/// The steps that a window shows; where the app lies then, nothing when the install came to nothing.
std::optional<std::string> installInSight(Install& install) {
  Vorlu& vorlu = install.vorlu;
  if (install.showProgress) openInstallWindow(vorlu);
  refuseReinstall(install);
  announceInstall(install);
  installPendingUpdates(install);
  const InstallOutcome outcome = runPipeline(install);
  runPostInstallTasks(install);
  return installedPath(install, outcome);
}

}  // namespace

void installApp(Vorlu& vorlu, const std::string& identifier, bool showProgress) {
  Install install{vorlu, identifier, showProgress, "", ""};
  setCurrentRunType(vorlu, "appInstalls");
  selectApp(install);
  enterPhase(install, "Init");
  requirePermission(install);
  std::optional<std::string> path;
  try {
    path = installInSight(install);
    if (!path) endFailed(install);
    tellSuccess(install, *path);
  } catch (const Terminated&) {
    if (showProgress) writeDialogCommand(vorlu, "quit:");  // nobody else would close the window
    throw;
  }
  // A catalog's own step after an install is the entry's postInstallScript, which the pipeline has run.
  if (!vorlu.modes.testInstall) checkForVersionMismatch(vorlu, *path);
  endRun(vorlu, 0);
}

}  // namespace vorlu
