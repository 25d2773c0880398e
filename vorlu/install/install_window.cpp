#include "vorlu/install/install_window.h"

#include <fmt/format.h>

#include "vorlu/install/download_type.h"
#include "vorlu/install/progress_bar.h"
#include "vorlu/install/running_apps.h"
#include "vorlu/prompts/app_icon.h"
#include "vorlu/prompts/completion_prompt.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/prompts/progress_window.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_position.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/receipts.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// One tick before the install and two behind it, beside those of the pipeline.
constexpr int ownSteps = 3;

/// Checked once in a run, since a wrong setting is logged.
const std::string& position(Vorlu& vorlu) {
  auto& kept = vorlu.progress.promptPosition;
  if (!kept) kept = validatedPromptPosition(vorlu.log, vorlu.preferences.scheduled().updateProgressPosition);
  return *kept;
}

const std::string& overlayIcon(Vorlu& vorlu) {
  auto& kept = vorlu.progress.overlayIcon;
  if (!kept) kept = progressOverlayIcon(vorlu, vorlu.preferences.scheduled().updateProgressOverlayIcon);
  return *kept;
}

void publishWindow(Vorlu& vorlu) {
  WatchReceiptData receipt;
  receipt.isUpdate = false;
  receipt.noProgress = false;
  receipt.appName = vorlu.currentApp.appName;
  receipt.identifier = vorlu.currentApp.appIdentifier;
  receipt.icon = vorlu.progress.appIcon;
  receipt.overlayIcon = overlayIcon(vorlu);
  receipt.promptPosition = position(vorlu);
  receipt.parentPID = std::to_string(vorlu.platform.processes.ownPid());
  receipt.userPromptPID = processIds(vorlu, "Dialog");
  writeWatchReceipt(vorlu, receipt);
}

void show(Vorlu& vorlu, CancelPrompt prompt) {
  if (!somebodyAtConsole(vorlu)) return;  // it would stand there for ever
  prompt.position = position(vorlu);
  showCancelPrompt(vorlu, prompt);
}

}  // namespace

void openInstallWindow(Vorlu& vorlu) {
  const CurrentApp& app = vorlu.currentApp;
  ProgressWindow window = installProgressWindow(app.appName);
  window.overlayIcon = overlayIcon(vorlu);
  window.icon = vorlu.progress.appIcon = resolveAppIcon(vorlu, app);
  window.position = position(vorlu);
  window.steps = progressSteps(app.downloadFileType, true) + ownSteps;
  vorlu.log(fmt::format("Installing {}", app.appName), silent);
  setBar(vorlu, 0);
  openProgressWindow(vorlu, window);
  publishWindow(vorlu);
  stepBar(vorlu);
  showProgressText(vorlu, "Preparing Install...");
  vorlu.platform.clock.sleep(seconds(1));
}

void closeCancelledWindow(Vorlu& vorlu, int ticks) {
  Clock& clock = vorlu.platform.clock;
  writeDialogCommand(vorlu, "progress: 2");
  showProgressText(vorlu, fmt::format("Installing {}...", vorlu.currentApp.appName));
  for (int tick = 0; tick < ticks; ++tick) {
    if (tick > 0) clock.sleep(milliseconds(500));
    stepBar(vorlu);
  }
  showProgressText(vorlu, "Install cancelled ❌");
  clock.sleep(seconds(1));
  closeProgressWindow(vorlu);
  clock.sleep(seconds(1));
}

void tellCancelled(Vorlu& vorlu, CancelReason reason, const std::string& appName) {
  CancelPrompt prompt = prepareCancelPrompt(vorlu, reason, appName);
  if (reason != CancelReason::notInCatalog) prompt.overlayIcon = overlayIcon(vorlu);
  show(vorlu, prompt);
  if (reason != CancelReason::notInCatalog) return;
  writeDialogCommand(vorlu, "quit:");
  vorlu.platform.clock.sleep(seconds(1));
}

void tellCancelled(Vorlu& vorlu, const std::string& reason) {
  CancelPrompt prompt = prepareCancelPrompt(vorlu, reason);
  prompt.overlayIcon = overlayIcon(vorlu);
  show(vorlu, prompt);
}

void offerLaunch(Vorlu& vorlu, const std::string& path) {
  if (!somebodyAtConsole(vorlu)) return;
  showCompletePrompt(vorlu,
                     InstallCompletePrompt{vorlu.currentApp.appName, path, vorlu.progress.appIcon, position(vorlu)});
}

}  // namespace vorlu
