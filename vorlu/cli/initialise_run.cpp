#include "vorlu/cli/initialise_run.h"

#include <fmt/format.h>

#include <chrono>
#include <string>

#include "vorlu/cli/coordination.h"
#include "vorlu/cli/key_material_pass.h"
#include "vorlu/cli/old_installations.h"
#include "vorlu/detection/version.h"
#include "vorlu/install/component_update.h"
#include "vorlu/install/recovery.h"
#include "vorlu/platform/passing_fault.h"
#include "vorlu/prompts/error_prompt.h"
#include "vorlu/server/reachability.h"
#include "vorlu/server/signed_request.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/receipts.h"
#include "vorlu/state/run_type.h"
#include "vorlu/state/work_directories.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

constexpr std::string_view minimumSystem = "11";

void closeProgressPrompt(Vorlu& vorlu) {
  writeDialogCommand(vorlu, "quit:");
  vorlu.platform.clock.sleep(seconds(1));
}

/// Whether the watch receipt tells of a window that this process has opened.
bool ownsProgressPrompt(Vorlu& vorlu) {
  const Result<std::string> bytes = vorlu.platform.files.read(paths::watchReceipt);
  const auto receipt = bytes ? decodePropertyList<WatchReceiptData>(*bytes) : bytes.failure();
  return receipt && receipt->parentPID == std::to_string(vorlu.platform.processes.ownPid());
}

ErrorFlavour flavourOf(const StartUp& startUp) {
  if (startUp.forcedPrompts) return ErrorFlavour::update;
  return startUp.showProgress ? ErrorFlavour::install : ErrorFlavour::none;
}

/// Closes the progress window, shows the error prompt and runs the inventory: what comes before the end of a run that
/// can't start. An empty code shows no prompt.
void tellOfStop(Vorlu& vorlu, const StartUp& startUp, std::string_view code) {
  if (startUp.forcedPrompts || (startUp.showProgress && ownsProgressPrompt(vorlu))) closeProgressPrompt(vorlu);
  if (!code.empty()) showErrorPrompt(vorlu, flavourOf(startUp), code);
  runJamfInventory(vorlu);
}

[[noreturn]] void stop(Vorlu& vorlu, const StartUp& startUp, std::string_view code) {
  tellOfStop(vorlu, startUp, code);
  endRun(vorlu, 1);
}

/// By the run type that a killed run has left, agents that start now would judge this one: it may not stand until the
/// coordination clears it.
void forgetKilledRun(Vorlu& vorlu) {
  if (readRunType(vorlu) != "N/A") static_cast<void>(isAlone(vorlu));
}

void keepCertificatesFresh(Vorlu& vorlu, const StartUp& startUp) {
  if (!checkInternetConnection(vorlu)) return;
  if (refreshCertificates(vorlu) == CertificateRefresh::failed) stop(vorlu, startUp, "001");
}

void requireSupportedSystem(Vorlu& vorlu, const StartUp& startUp) {
  if (compareVersions(vorlu.platform.device.osVersion(), minimumSystem) >= 0) return;
  vorlu.log("Error: This version of Vorlu requires at least macOS 11");
  vorlu.log.logForJamf("Error: Unsupported macOS version detected. Vorlu requires at least macOS 11");
  stop(vorlu, startUp, "004");
}

void requireInternet(Vorlu& vorlu, const StartUp& startUp) {
  if (checkInternetConnection(vorlu)) return;
  if (startUp.offlineTolerated || startUp.forcedPrompts) {
    vorlu.log(
        "Warning: No internet connection was detected. Any updates already cached will be installed but no new updates "
        "will be downloaded");
    return;
  }
  const std::string text =
      "Error: No internet connection was detected. Please connect the computer to the internet before running Vorlu "
      "again";
  vorlu.log(text);
  vorlu.log.logForJamf(text);
  if (startUp.showProgress) showErrorPrompt(vorlu, flavourOf(startUp), "005");
  vorlu.log("Exiting...");
  endRun(vorlu, 1);
}

void requireComponents(Vorlu& vorlu, const StartUp& startUp) {
  if (componentsInstalled(vorlu.platform.files)) return;
  fetchServerData(vorlu);
  vorlu.log("One or more components required by Vorlu were not found");
  updateComponents(vorlu, false);
  if (componentsInstalled(vorlu.platform.files)) return;
  vorlu.log.logForJamf(
      fmt::format("Error: Vorlu requires components which could not be installed. Please check the network connection "
                  "and try again. For support, contact {}",
                  vorlu.site.supportContact()));
  stop(vorlu, startUp, "010");
}

/// Run data that can't be decoded would make every update of it fail: it is kept under another name.
void replaceCorruptRunData(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (!files.exists(paths::runData)) return;
  const Result<RunDataFile> file = loadRunData(files);
  if (file || isPassingFault(file.failure())) return;
  const std::string aside = paths::runData + ".corrupt";
  files.remove(aside);
  const Status moved = files.move(paths::runData, aside);
  if (!moved) {
    vorlu.log(fmt::format("Error: The run data plist could not be decoded - {} - and not be moved to {} - {}",
                          file.error(), aside, moved.error()));
    return;
  }
  vorlu.log(
      fmt::format("Warning: The run data plist could not be decoded and was moved to {} - {}", aside, file.error()));
}

void requireState(Vorlu& vorlu, const StartUp& startUp) {
  replaceCorruptRunData(vorlu);
  const std::optional<std::string> missing = createRunData(vorlu);
  if (!missing) return;
  vorlu.log.logForJamf(*missing);
  tellOfStop(vorlu, startUp, "010");
  endRunWithoutRunData(vorlu, 1);
}

std::string noApplicationData(Vorlu& vorlu) {
  return fmt::format("Error: No Application data was found. Unable to continue. For support please contact {}",
                     vorlu.site.supportContact());
}

/// A search in the catalog needs a server, or what the server said last.
void requireCatalogSource(Vorlu& vorlu, const StartUp& startUp) {
  checkServerReachable(vorlu);
  if (!vorlu.catalog.offlineMode || vorlu.platform.files.exists(paths::offlineData)) return;
  vorlu.log(noApplicationData(vorlu));
  stop(vorlu, startUp, "");
}

/// Only root can read the key material and the state; nothing is written or fetched for another user.
void refuseValidationWithoutRoot(Vorlu& vorlu) {
  if (vorlu.platform.processes.userName() == "root") return;
  vorlu.platform.console.print(noApplicationData(vorlu));
  exitProcess(1);
}

}  // namespace

void initialiseRun(Vorlu& vorlu, const StartUp& startUp) {
  startUp.validateOnly ? refuseValidationWithoutRoot(vorlu) : forgetKilledRun(vorlu);
  vorlu.modes.runStage = "Initialising";
  removeOldInstallations(vorlu);
  obtainKeyMaterial(vorlu);
  ensureWorkDirectories(vorlu);
  keepCertificatesFresh(vorlu, startUp);
  if (startUp.validateOnly) return requireCatalogSource(vorlu, startUp);

  if (!requireKeychainItems(vorlu)) stop(vorlu, startUp, "002");
  if (coordinateInstances(vorlu) == Coordination::failed) stop(vorlu, startUp, "003");
  recoverKilledRuns(vorlu);  // before anybody looks for apps: one may stand aside
  requireSupportedSystem(vorlu, startUp);
  requireInternet(vorlu, startUp);
  requireComponents(vorlu, startUp);
  requireState(vorlu, startUp);
  if (startUp.forcedPrompts) closeProgressPrompt(vorlu);
  vorlu.modes.runStage = "Updates";
}

}  // namespace vorlu
