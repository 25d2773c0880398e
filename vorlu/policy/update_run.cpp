#include "vorlu/policy/update_run.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/detection/download_cache.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/detection/update_check.h"
#include "vorlu/install/download_type.h"
#include "vorlu/install/installed_check.h"
#include "vorlu/install/pipeline.h"
#include "vorlu/install/progress_bar.h"
#include "vorlu/install/running_apps.h"
#include "vorlu/platform/termination.h"
#include "vorlu/policy/app_quitting.h"
#include "vorlu/prompts/app_icon.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/prompts/progress_window.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_position.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/receipts.h"
#include "vorlu/state/shell_line.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

/// Ticks that this run adds to those of the pipeline for one app.
constexpr int ownSteps = 4;

/// Longest wait for an app to open again when the agent is asked to end.
constexpr seconds timeToReopen{10};

/// What became of one update.
enum class Outcome { installed, failed, skipped };

struct UpdateRun {
  Vorlu& vorlu;
  const std::vector<ApplicationInventory> updates;
  const UpdateRunKind kind;
  const UpdateRunSettings settings;
  ProgressWindow window = {};
  bool windowOpen = false;
  bool lastPendingReached = false;
  std::optional<std::string> appToReopen = {};  ///< path of the app in work, when its user had it open

  bool hasWindow() const { return kind != UpdateRunKind::test && settings.showsWindow(); }
};

void wait(UpdateRun& run, seconds duration) {
  run.vorlu.platform.clock.sleep(duration);
}

void tick(UpdateRun& run) {
  if (run.hasWindow()) stepBar(run.vorlu);
}

void showText(UpdateRun& run, const std::string& text) {
  if (run.hasWindow()) showProgressText(run.vorlu, text);
}

/// What the window says of the selected app, which is number `number` of this run.
void describeApp(UpdateRun& run, int number) {
  CurrentApp& app = run.vorlu.currentApp;
  app.progressTitle = fmt::format("Updating {} ({} of {})", app.appName, number, run.updates.size());
  const ProgressWindow named = updateProgressWindow(app.appName);
  run.window.title = run.updates.size() > 1 ? app.progressTitle : named.title;
  run.window.message = named.message;
  run.window.icon = resolveAppIcon(run.vorlu, app);
}

void openWindow(UpdateRun& run) {
  Vorlu& vorlu = run.vorlu;
  if (!findApp(vorlu, run.updates.front().appName)) return;  // told when its turn comes
  describeApp(run, 1);
  run.window.overlayIcon = progressOverlayIcon(vorlu, run.settings.overlayIcon);
  run.window.position = run.settings.position;
  run.window.steps = progressSteps(vorlu.currentApp.downloadFileType, false) + ownSteps;
  run.window.onTop = run.settings.progressPrompt == "focusPrompt";
  if (!run.hasWindow()) return;
  openProgressWindow(vorlu, run.window);
  run.windowOpen = true;
}

/// Selects the app of a record and tells of it. False when the catalog has lost it.
bool beginApp(UpdateRun& run, const ApplicationInventory& record) {
  Vorlu& vorlu = run.vorlu;
  vorlu.progress.installProgress = 0;
  run.lastPendingReached = &record == &run.updates.back();
  if (!findApp(vorlu, record.appName)) {
    vorlu.log(fmt::format("Error: {} was not found in the Vorlu App catalog. Skipping the update...", record.appName));
    return false;
  }
  describeApp(run, ++vorlu.updates.currentUpdateNumber);
  if (run.hasWindow() && run.kind != UpdateRunKind::forced) {
    retitleProgressWindow(vorlu, run.window);
    setBar(vorlu, 0);
    showText(run, "Preparing Update...");
  }
  wait(run, seconds(2));
  const std::string& version = record.installedVersion;
  vorlu.log(fmt::format("Current app is {}", vorlu.currentApp.appName));
  vorlu.log(fmt::format("The version of {} before updating is {}", vorlu.currentApp.appName,
                        version.empty() ? "unknown" : version));
  return true;
}

/// Sets up the names by which the app is seen running.
void watchApp(UpdateRun& run) {
  InstallProgress& progress = run.vorlu.progress;
  progress.appBinaries.clear();
  listAppBinaries(run.vorlu, run.vorlu.currentApp.installedPath);
  progress.processWatchList = progress.appBinaries;
  tick(run);
}

void publishUpdate(UpdateRun& run) {
  Vorlu& vorlu = run.vorlu;
  const CurrentApp& app = vorlu.currentApp;
  WatchReceiptData receipt;
  receipt.parentPID = std::to_string(vorlu.platform.processes.ownPid());
  receipt.userPromptPID = processIds(vorlu, "Dialog");
  receipt.isUpdate = true;
  receipt.currentUpdate = vorlu.updates.currentUpdateNumber;
  receipt.updateCount = static_cast<std::int64_t>(run.updates.size());
  receipt.appName = app.appName;
  receipt.identifier = app.appIdentifier;
  receipt.appBundle = app.appType == "appBundle";
  receipt.noProgress = !run.hasWindow();
  receipt.completePrompt = run.settings.displayCompletePrompt;
  receipt.promptPosition = run.window.position;
  receipt.icon = run.window.icon;
  receipt.overlayIcon = run.window.overlayIcon;
  receipt.blockingApps = app.blockingApps;
  receipt.primaryBinary = app.primaryApp;
  writeWatchReceipt(vorlu, receipt);
  wait(run, seconds(1));
}

/// What was started again since the app quit would be torn apart by the install.
void killWhatRunsAgain(UpdateRun& run) {
  tick(run);
  showText(run, "Installing Update...");
  killAppBinaries(run.vorlu);
  for (const std::string& name : run.vorlu.currentApp.blockingApps)
    runShell(run.vorlu, fmt::format("killall {}", shellWord(name)));
}

/// The record of a fresh check; nothing when that doesn't find the update due any more.
std::optional<ApplicationInventory> lookAgain(UpdateRun& run, const std::string& appName) {
  Vorlu& vorlu = run.vorlu;
  vorlu.log("Checking for updates. Please wait...");
  checkForUpdates(vorlu, run.kind == UpdateRunKind::forced ? appName : "", false);
  const auto& pending = vorlu.updates.pendingUpdates;
  if (pending.empty()) return std::nullopt;  // a full check has recorded compliance itself
  vorlu.log(fmt::format("Initialising the {} update...", appName));
  const auto found =
      std::find_if(pending.begin(), pending.end(), [&](const auto& record) { return record.appName == appName; });
  return found == pending.end() ? std::nullopt : std::optional(*found);
}

Outcome install(UpdateRun& run, const std::string& appName) {
  Vorlu& vorlu = run.vorlu;
  const auto record = lookAgain(run, appName);
  if (!findApp(vorlu, appName)) return Outcome::failed;
  if (!record) return isLatestInstalled(vorlu) ? Outcome::installed : Outcome::failed;
  if (vorlu.modes.testingBlueprints && vorlu.currentApp.skipServerVerification) {
    vorlu.log(fmt::format("Server verification for {} is not enabled. Skipping update test...", appName));
    return Outcome::skipped;
  }
  vorlu.updates.currentUpdate = *record;
  InstallRequest request = updateRequest(*record);
  request.writeProgress = run.hasWindow();
  return runInstallPipeline(vorlu, request) == InstallOutcome::installed ? Outcome::installed : Outcome::failed;
}

void retractPublication(UpdateRun& run) {
  if (run.vorlu.platform.files.exists(paths::watchReceipt)) removeFile(run.vorlu, paths::watchReceipt);
  if (!run.hasWindow()) return;
  tick(run);
  wait(run, seconds(1));
  tick(run);
}

void noteFailure(UpdateRun& run, const std::string& serverName, const std::string& appName) {
  Vorlu& vorlu = run.vorlu;
  vorlu.log(fmt::format("Error: The {} update failed. Please contact {} for assistance.", appName,
                        vorlu.site.supportContact()));
  if (run.kind != UpdateRunKind::forced) noteFailedUpdate(vorlu.updates, serverName);
  vorlu.updates.failedAppNames.push_back(appName);
  if (!run.hasWindow()) return;
  showText(run, "Update Failed ❌");
  wait(run, seconds(4));
  if (!run.lastPendingReached) return;  // the window stays for the next app
  writeDialogCommand(vorlu, "quit:");
  run.windowOpen = false;
}

void noteOutcome(UpdateRun& run, Outcome outcome) {
  const CurrentApp& app = run.vorlu.currentApp;
  if (outcome == Outcome::failed) noteFailure(run, app.serverName, app.appName);
  if (outcome == Outcome::installed) {
    showText(run, "Update Complete ✅");
    noteUpdate(run.vorlu.updates, app.serverName, app.appName);
  }
  wait(run, seconds(1));
  run.vorlu.progress.appBinaries.clear();
  run.vorlu.progress.processWatchList.clear();
}

void relaunch(UpdateRun& run) {
  Vorlu& vorlu = run.vorlu;
  const CurrentApp& app = vorlu.currentApp;
  if (!run.settings.autoRelaunchApps) {
    vorlu.log(fmt::format("Skipping auto-relaunch of {} because auto-relaunch is disabled", app.appName));
  } else if (app.appType != "appBundle") {
    vorlu.log(fmt::format("{} is not an app bundle, skipping auto-relaunch", app.appName));
  } else {
    vorlu.log(fmt::format("Auto-relaunching {} at path {}...", app.appName, app.installedPath));
    openAsConsoleUser(vorlu, "-g -a ", app.installedPath);
  }
}

void updateOne(UpdateRun& run, const ApplicationInventory& record) {
  Vorlu& vorlu = run.vorlu;
  if (!beginApp(run, record)) return noteFailure(run, record.appName, record.appName);
  watchApp(run);
  const bool wasRunning = isAppRunning(vorlu, vorlu.currentApp.installedBundleIdentifier, record.appName);
  if (wasRunning) {
    run.appToReopen = vorlu.currentApp.installedPath;
    quitRunningApp(vorlu);
  }
  publishUpdate(run);
  killWhatRunsAgain(run);
  const Outcome outcome = install(run, record.appName);
  retractPublication(run);
  noteOutcome(run, outcome);
  if (wasRunning && run.kind != UpdateRunKind::forced) relaunch(run);
  run.appToReopen.reset();
}

/// Someone asked the agent to end: the user gets back what the run took from him.
void giveBack(UpdateRun& run) {
  Vorlu& vorlu = run.vorlu;
  run.hasWindow() ? writeDialogCommand(vorlu, "quit:") : removeWatchReceipt(vorlu);
  if (!run.appToReopen || !run.settings.autoRelaunchApps || vorlu.currentApp.appType != "appBundle") return;
  vorlu.log(fmt::format("Auto-relaunching {} at path {}...", vorlu.currentApp.appName, *run.appToReopen));
  openAsConsoleUser(vorlu, "-g -a ", *run.appToReopen, timeToReopen);
}

}  // namespace

UpdateRunSettings updateRunSettings(Vorlu& vorlu, UpdateRunKind kind) {
  const auto of = [&](const auto& section) {
    const std::optional<std::string> progressPrompt = section.updateProgressPrompt;
    return UpdateRunSettings{
        progressPrompt.value_or(""), validatedPromptPosition(vorlu.log, section.updateProgressPosition),
        section.updateProgressOverlayIcon, section.autoRelaunchApps, section.displayCompletePrompt};
  };
  return kind == UpdateRunKind::forced ? of(vorlu.preferences.forced()) : of(vorlu.preferences.scheduled());
}

void runUpdateWithProgress(Vorlu& vorlu, std::vector<ApplicationInventory> updates, UpdateRunKind kind,
                           const UpdateRunSettings& settings) {
  vorlu.updates.failedAppNames.clear();
  vorlu.updates.currentUpdateNumber = 0;
  if (updates.empty()) return;
  UpdateRun run{vorlu, std::move(updates), kind, settings};
  try {
    openWindow(run);
    for (const ApplicationInventory& record : run.updates) updateOne(run, record);
  } catch (const Terminated&) {
    giveBack(run);
    throw;
  }
  if (run.windowOpen) closeProgressWindow(vorlu);
}

void runUpdateWithProgress(Vorlu& vorlu, std::vector<ApplicationInventory> updates, UpdateRunKind kind) {
  runUpdateWithProgress(vorlu, std::move(updates), kind, updateRunSettings(vorlu, kind));
}

}  // namespace vorlu
