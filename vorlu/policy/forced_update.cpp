#include "vorlu/policy/forced_update.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "vorlu/detection/find_app.h"
#include "vorlu/detection/update_check.h"
#include "vorlu/install/pipeline.h"
#include "vorlu/install/running_apps.h"
#include "vorlu/policy/acceptable_use.h"
#include "vorlu/policy/deferral_window.h"
#include "vorlu/policy/finish_forced_update.h"
#include "vorlu/policy/run_limits.h"
#include "vorlu/policy/update_run.h"
#include "vorlu/prompts/app_icon.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/prompts/grace_prompt.h"
#include "vorlu/prompts/initial_prompt.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/replacement.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::int64_t now(Vorlu& vorlu) {
  return static_cast<std::int64_t>(vorlu.platform.clock.now());
}

/// A receipt without an app, or without an update, has nothing to force. What an empty catalog doesn't know says
/// nothing, and a fault of the moment may have hidden the app or its version: only what is seen twice is believed.
ForcedOutcome dropReceipt(Vorlu& vorlu, const ForcedMark& mark) {
  const AppBlueprints* entry = matchApp(vorlu, mark.app);
  if (entry != nullptr && needsUpdate(vorlu, *entry)) {
    vorlu.log(fmt::format("{} needs its update after all. It is forced by the next run", mark.appName), silent);
    return ForcedOutcome::heldBack;
  }
  if (!vorlu.catalog.entries.empty()) {
    vorlu.log(fmt::format("Removing {} update receipt...", mark.appName));
    removeForcedUpdateReceipt(vorlu, mark.app);
  }
  return ForcedOutcome::nothingToForce;
}

/// Selects the app and looks for its update. False when there is nothing to force.
bool findUpdate(Vorlu& vorlu, ForcedMark& mark) {
  const bool known = findApp(vorlu, mark.app);
  if (known) mark.appName = vorlu.currentApp.appName;
  const bool installed = known && !vorlu.currentApp.installedPath.empty();
  vorlu.log(fmt::format("Forced update receipt found for {}", mark.appName));
  if (installed) {
    checkForUpdates(vorlu, mark.appName, false);
  } else {
    vorlu.log(fmt::format("The specified app {} could not be found. No action will be taken.", mark.appName));
  }
  if (!installed || vorlu.updates.pendingUpdates.empty()) return false;
  mark.update = vorlu.updates.pendingUpdates.front();
  return true;
}

void readReceipt(Vorlu& vorlu, ForcedMark& mark) {
  mark.receipt = loadForcedReceipt(vorlu.platform.files, mark.path);
  mark.deferrals = deferralsOf(mark.receipt);
  beginCurrentTask(vorlu, mark.app);
  if (!mark.deferrals) vorlu.log(fmt::format("No deferrals will be allowed for the {} update.", mark.appName));
}

bool passesDeferralPeriod(Vorlu& vorlu, const ForcedMark& mark) {
  const auto& lastRun = mark.receipt.lastRun;
  if (!lastRun) {
    vorlu.log(fmt::format("The {} update has not previously run. Continuing...", mark.appName));
    return true;
  }
  logDeferralTimes(vorlu, *lastRun, deferralEnd(*lastRun, periodMinutesOf(mark.receipt)));
  const bool elapsed = deferralPeriodElapsed(mark.receipt, now(vorlu));
  vorlu.log(elapsed ? "The deferral period has elapsed. Continuing..." : "The deferral period has not elapsed.");
  return elapsed;
}

bool passesRunLimits(Vorlu& vorlu) {
  const RunLimits& limits = vorlu.preferences.forced().runLimitations;
  Clock& clock = vorlu.platform.clock;
  return passesRunDayGate(vorlu.log, clock, limits, std::nullopt) && passesRunTimeGate(vorlu.log, clock, limits);
}

AcceptableUseLines acceptableUseLines(const std::string& appName) {
  const auto forApp = [&appName](std::string_view line) { return replacedAll(line, "{appName}", appName); };
  return {
      "None of the DND Apps are in the foreground.",
      "No DND Application Assertions are configured for forced updates.",
      "Found configured DND Application assertions: {apps}",
      {"The following configured DND App(s) are in the foreground, the update will be skipped with no user prompts: "
       "{apps}",
       forApp("Forced {appName} update skipped due to the following configured DND App(s) being in the foreground: "
              "{apps}")},
      {"The following configured DND Assertion App(s) are using assertions, the update will be skipped with no user "
       "prompts: {apps}",
       forApp("Forced {appName} update skipped due to the following configured DND Assertion App(s) using "
              "assertions: {apps}")},
      {"The camera is in use.",
       forApp("Forced {appName} update skipped due to the camera being in use when attempting to prompt the user.")},
      {"DND mode is active. Skipping update prompt",
       "Update skipped due to DND mode being in use when attempting to prompt the user."},
      {"Screen Sharing is in use.",
       forApp("Forced {appName} update skipped due to screen sharing being in use when attempting to prompt the "
              "user.")}};
}

bool passesAcceptableUse(Vorlu& vorlu, const ForcedMark& mark) {
  const auto use =
      checkAcceptableUse(vorlu, acceptableUseKeys(vorlu.preferences.forced()), acceptableUseLines(mark.appName));
  if (use && *use != AcceptableUse::camera) runJamfInventory(vorlu);
  return !use;
}

bool mayGoOn(Vorlu& vorlu, const ForcedMark& mark) {
  if (wasForced(vorlu.updates, mark.update)) return false;  // marked twice: the user has answered already
  return passesDeferralPeriod(vorlu, mark) && passesRunLimits(vorlu) && passesAcceptableUse(vorlu, mark);
}

bool hasDeferrals(const ForcedMark& mark) {
  return mark.deferrals && *mark.deferrals >= 1;
}

void tellDeferrals(Vorlu& vorlu, const ForcedMark& mark) {
  if (hasDeferrals(mark)) {
    vorlu.log(fmt::format("User deferrals remaining for the {} update: {}", mark.appName, *mark.deferrals));
  } else {
    vorlu.log(fmt::format("The user has no remaining deferrals for the {} update", mark.appName));
  }
}

InstallOutcome updateUnlessInUse(Vorlu& vorlu, const ForcedMark& mark) {
  vorlu.updates.currentUpdate = mark.update;
  InstallRequest request = updateRequest(mark.update);
  request.appName = mark.appName;
  request.checkRunning = true;
  request.suppressInUseNotice = true;
  return runInstallPipeline(vorlu, request);
}

UpdatePrompt preparePrompt(Vorlu& vorlu, const ForcedMark& mark, const std::string& icon) {
  ForcedPromptInput input;
  input.app = {mark.appName, icon, mark.update.latestVersion};
  input.deferrals = mark.deferrals;
  input.graceMinutes = graceMinutesOf(mark.receipt);
  return prepareForcedPrompt(vorlu, input);
}

/// One deferral less, and the beginning of the next period.
std::int64_t spendDeferral(Vorlu& vorlu, ForcedMark& mark) {
  mark.deferrals = *mark.deferrals - 1;
  mark.receipt.deferrals = std::to_string(*mark.deferrals);
  mark.receipt.lastRun = now(vorlu);
  updateReceipt(vorlu, mark.path, mark.receipt);
  return *mark.deferrals;
}

/// Asks until the user answers. False when the update has to wait: the user deferred, or the prompt died.
bool askUser(Vorlu& vorlu, ForcedMark& mark, const UpdatePrompt& prompt) {
  PromptExit exit = showInitialPrompt(vorlu, prompt);
  while (exit.answer == PromptAnswer::timerRanOut) exit = showInitialPrompt(vorlu, prompt);
  if (exit.answer == PromptAnswer::button1) return true;
  const std::int64_t left = spendDeferral(vorlu, mark);
  if (exit.answer == PromptAnswer::button2) {
    vorlu.log(fmt::format("The user deferred. The new defer count is {}", left));
    vorlu.log.logForJamf(
        fmt::format("The user deferred the {} forced update. The new defer count is {}", mark.appName, left));
  } else {
    vorlu.log(fmt::format("The initial prompt exited unexpectedly. The defer count is now {}", left));
    vorlu.log.logForJamf(
        fmt::format("{} forced update prompt quit unexpectedly. The new defer count is {}", mark.appName, left));
  }
  return false;
}

/// The user of an app in use decides while there are deferrals; then only the grace period is left.
bool userAgrees(Vorlu& vorlu, ForcedMark& mark, const UpdatePrompt& prompt) {
  vorlu.log(fmt::format("{} is in use. Prompting user...", mark.appName));
  if (hasDeferrals(mark)) return askUser(vorlu, mark, prompt);
  showGracePrompt(vorlu, prompt);
  return true;
}

ForcedOutcome finish(Vorlu& vorlu, ForcedMark& mark, bool updated, const ForcedSight* sight) {
  if (updated) {
    finishSuccessfulUpdate(vorlu, mark, sight);
  } else {
    finishFailedUpdate(vorlu, mark, sight);
  }
  return updated ? ForcedOutcome::updated : ForcedOutcome::failed;
}

ForcedOutcome updateInFrontOfUser(Vorlu& vorlu, ForcedMark& mark) {
  if (!somebodyAtConsole(vorlu)) {
    vorlu.log(fmt::format("{} is in use, but there is no user to ask. The update has to wait", mark.appName), silent);
    return ForcedOutcome::heldBack;
  }
  const UpdateRunSettings settings = updateRunSettings(vorlu, UpdateRunKind::forced);
  ForcedSight sight;
  sight.position = settings.position;
  sight.icon = resolveAppIcon(vorlu, mark.update);
  const UpdatePrompt prompt = preparePrompt(vorlu, mark, sight.icon);
  sight.completeMessage = prompt.completeMessage;
  if (!userAgrees(vorlu, mark, prompt)) return ForcedOutcome::deferred;
  sight.wasQuit = isSelectedAppRunning(vorlu, mark.update.installedPath, mark.appName);
  runUpdateWithProgress(vorlu, {mark.update}, UpdateRunKind::forced, settings);
  const bool failed = !std::exchange(vorlu.updates.failedAppNames, {}).empty();  // no failure of the scheduled flow
  return finish(vorlu, mark, !failed, &sight);
}

/// An app that isn't in use is updated without a word to the user.
ForcedOutcome update(Vorlu& vorlu, ForcedMark& mark) {
  vorlu.updates.forcedApps.push_back(mark.appName);
  const InstallOutcome outcome = updateUnlessInUse(vorlu, mark);
  if (outcome == InstallOutcome::inUse) return updateInFrontOfUser(vorlu, mark);
  return finish(vorlu, mark, outcome == InstallOutcome::installed, nullptr);
}

ForcedOutcome work(Vorlu& vorlu, ForcedMark& mark) {
  if (!findUpdate(vorlu, mark)) return dropReceipt(vorlu, mark);
  readReceipt(vorlu, mark);
  if (!mayGoOn(vorlu, mark)) return ForcedOutcome::heldBack;
  tellDeferrals(vorlu, mark);
  return update(vorlu, mark);
}

}  // namespace

bool deferralPeriodElapsed(const ReceiptData& receipt, std::int64_t now) {
  return !receipt.lastRun || deferralEnd(*receipt.lastRun, periodMinutesOf(receipt)) < now;
}

ForcedOutcome processForcedReceipt(Vorlu& vorlu, const std::string& app) {
  ForcedMark mark;
  mark.app = mark.appName = app;
  mark.path = forcedReceiptPath(app);
  setCurrentRunType(vorlu, "forcedUpdate");
  const ForcedOutcome outcome = work(vorlu, mark);
  endCurrentTask(vorlu);
  setCurrentRunType(vorlu, "N/A");
  return outcome;
}

}  // namespace vorlu
