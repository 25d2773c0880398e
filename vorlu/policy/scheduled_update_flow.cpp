#include "vorlu/policy/scheduled_update_flow.h"

#include <fmt/format.h>

#include "vorlu/detection/placeholders.h"
#include "vorlu/policy/acceptable_use.h"
#include "vorlu/policy/deferrals.h"
#include "vorlu/policy/frequency_calculation.h"
#include "vorlu/policy/run_limits.h"
#include "vorlu/policy/scheduled_outcome.h"
#include "vorlu/policy/scheduled_rules.h"
#include "vorlu/policy/scheme_gate.h"
#include "vorlu/policy/update_pass.h"
#include "vorlu/policy/update_run.h"
#include "vorlu/prompts/checking_prompt.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/prompts/grace_prompt.h"
#include "vorlu/prompts/initial_prompt.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// One run of the flow: what its stages hand on.
struct ScheduledRun {
  Vorlu& vorlu;
  const Trigger trigger;
  std::string deferralOption;  ///< in Self Service none of the profile's
  std::string dialogIcon = {};
  std::vector<ApplicationInventory> updates = {};
  UpdateRunSettings settings = {};
  UpdatePrompt prompt = {};

  bool isSelfService() const { return trigger == Trigger::selfService; }
  DeferralMode deferralMode() const { return deferralModeOf(deferralOption); }
};

void announce(ScheduledRun& run) {
  if (run.isSelfService()) {
    run.vorlu.log("Initialising Self Service update mechanism...");
  } else if (run.trigger == Trigger::testPrompt) {
    run.vorlu.log("Initialising update mechanism...");
  } else {
    run.vorlu.log("Initialising recurring scheduled update mechanism...");
  }
  run.dialogIcon = chooseDialogIcon(run.vorlu, run.vorlu.preferences.scheduled().customIcon);
  setCurrentRunType(run.vorlu, initialRunType(run.trigger));
}

/// Updates what isn't in use, unless an earlier step of this process did. A Self Service user sees that something
/// happens.
void lookForUpdates(ScheduledRun& run) {
  std::optional<pid_t> checkingPrompt;
  if (run.isSelfService()) checkingPrompt = showCheckingPrompt(run.vorlu, run.dialogIcon);
  if (!run.vorlu.updates.passDone) initialiseUpdates(run.vorlu);
  if (run.isSelfService()) closeCheckingPrompt(run.vorlu, checkingPrompt);
}

bool endsWith(ScheduledRun& run, int status) {
  run.vorlu.modes.runExitStatus = status;
  return false;
}

/// The scheme, the deferral state and the run limitations, in the order of their authority.
bool passesGates(ScheduledRun& run) {
  Vorlu& vorlu = run.vorlu;
  Clock& clock = vorlu.platform.clock;
  const ScheduledUpdatesPrefs& prefs = vorlu.preferences.scheduled();
  const bool hasPatchDay = schemeOf(prefs.runFrequency.runType) == Scheme::patchDay;
  if (!passesSchemeGate(vorlu)) return endsWith(run, 0);
  prepareDeferralState(vorlu);
  if (!passesRunDayGate(vorlu.log, clock, prefs.runLimitations,
                        hasPatchDay ? std::optional(prefs.runFrequency.patchDay) : std::nullopt))
    return endsWith(run, 1);
  if (!passesRunTimeGate(vorlu.log, clock, prefs.runLimitations)) return endsWith(run, 0);
  return true;
}

bool policyAllows(ScheduledRun& run) {
  if (run.isSelfService()) {
    resolveDeferralLimit(run.vorlu);
    return true;
  }
  if (run.trigger != Trigger::testPrompt) return passesGates(run);
  prepareDeferralState(run.vorlu);
  run.vorlu.log("Test prompt flag defined, ignoring run limitations...");
  return true;
}

/// Takes the apps that the pass left alone because they were in use: those alone have to quit. An app whose user was
/// asked by the forced step of this run isn't taken. False when there is nothing to ask for.
bool takeUpdates(ScheduledRun& run) {
  Vorlu& vorlu = run.vorlu;
  const auto& inUse = vorlu.updates.skippedUpdates;
  if (inUse.empty()) endWithoutUpdates(vorlu, run.trigger, run.dialogIcon);
  std::copy_if(inUse.begin(), inUse.end(), std::back_inserter(run.updates),
               [&](const ApplicationInventory& update) { return !wasForced(vorlu.updates, update); });
  if (run.updates.empty()) return false;
  logFoundUpdates(vorlu, run.updates);
  return true;
}

void logProgressSetting(ScheduledRun& run) {
  const std::string& shown = run.settings.progressPrompt;
  if (shown == "focusPrompt") run.vorlu.log("The update progress prompt will be in the foreground");
  if (shown == "noFocusPrompt") run.vorlu.log("The update progress prompt will not be in the foreground");
  if (shown == "noPrompt") run.vorlu.log("No update progress prompt will be displayed during the update");
}

void preparePrompt(ScheduledRun& run) {
  Vorlu& vorlu = run.vorlu;
  const std::vector<PromptApp> apps = promptApps(vorlu, run.updates);
  run.settings = updateRunSettings(vorlu, UpdateRunKind::scheduled);
  logProgressSetting(run);
  setCurrentRunType(vorlu, requiredRunType(run.trigger));
  if (run.isSelfService()) run.deferralOption = "selfService";
  run.prompt =
      prepareScheduledPrompt(vorlu, {apps, run.deferralOption, vorlu.runData.deferCountRemaining(), run.dialogIcon});
}

/// Nobody who presents or is in a call is asked, unless he asked himself.
bool mayInterruptUser(ScheduledRun& run) {
  Vorlu& vorlu = run.vorlu;
  if (run.trigger == Trigger::testPrompt) vorlu.log("Test prompt flag defined, ignoring any configured DND keys...");
  if (run.trigger != Trigger::run && run.trigger != Trigger::prompt) return true;
  const AcceptableUseKeys keys = acceptableUseKeys(vorlu.preferences.scheduled());
  return !checkAcceptableUse(vorlu, keys, scheduledAcceptableUseLines) || endsWith(run, 0);
}

/// Whether the user whom this run asks is still logged in.
bool userIsStillThere(Vorlu& vorlu) {
  return vorlu.platform.consoleUser.name() == consoleUserName(vorlu);
}

/// Shows the initial prompt until it is answered. False when there is nobody left to answer.
bool askUser(ScheduledRun& run) {
  PromptExit exit = showInitialPrompt(run.vorlu, run.prompt);
  while (exit.answer == PromptAnswer::timerRanOut) {
    if (!userIsStillThere(run.vorlu)) return endsWith(run, 0);
    exit = showInitialPrompt(run.vorlu, run.prompt);
  }
  if (exit.answer == PromptAnswer::button2) recordDeferral(run.vorlu);
  if (exit.answer == PromptAnswer::quitUnexpectedly)
    recordAbnormalPromptExit(run.vorlu, exit.text,
                             run.isSelfService() ? PromptDeath::countsNothing : PromptDeath::countsAsDeferral);
  return true;
}

/// True when the updates may begin.
bool promptUser(ScheduledRun& run) {
  Vorlu& vorlu = run.vorlu;
  vorlu.log("Prompting user...");
  switch (promptChoice(run.deferralMode(), run.trigger, vorlu.runData.deferCountRemaining())) {
    case PromptChoice::initial:
      return askUser(run);
    case PromptChoice::graceDeferralsDisabled:
      vorlu.log("Deferrals disabled. Prompting user with grace period...");
      break;
    case PromptChoice::graceOnDemand:
      vorlu.log("Timer prompt called. Prompting user with grace period...");
      break;
    case PromptChoice::graceCountUsedUp:
      break;
    case PromptChoice::none:
      return true;
  }
  showGracePrompt(vorlu, run.prompt);
  return true;
}

}  // namespace

void scheduledUpdateFlow(Vorlu& vorlu, const std::string& trigger) {
  ScheduledRun run{vorlu, triggerOf(trigger), vorlu.preferences.scheduled().deferralConfiguration.deferralOption};
  vorlu.modes.runExitStatus = 0;
  announce(run);
  if (run.isSelfService() && !somebodyAtConsole(vorlu)) return;
  lookForUpdates(run);
  // With nobody to ask, the deferral state is left as it is for the next user.
  if (!somebodyAtConsole(vorlu) && !vorlu.updates.skippedUpdates.empty()) return;
  if (!policyAllows(run)) return;
  if (!takeUpdates(run)) return;
  preparePrompt(run);
  if (!mayInterruptUser(run)) return;
  if (!promptUser(run)) return;
  runUpdateWithProgress(vorlu, run.updates, UpdateRunKind::scheduled, run.settings);
  concludeUpdates(vorlu, {run.deferralMode(), run.dialogIcon, run.settings, run.prompt.completeMessage, run.updates});
}

}  // namespace vorlu
