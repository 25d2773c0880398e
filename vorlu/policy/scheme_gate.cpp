#include "vorlu/policy/scheme_gate.h"

#include <fmt/format.h>

#include "vorlu/policy/deferral_window.h"
#include "vorlu/policy/weekday.h"
#include "vorlu/state/receipts.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::chrono::seconds pause{1};

bool goesOn(Vorlu& vorlu, SchemeVerdict verdict, bool patchDay) {
  if (verdict == SchemeVerdict::askDeferralWindow) return checkDeferralWindow(vorlu, patchDay);
  return verdict == SchemeVerdict::goOn;
}

bool frequencyScheme(Vorlu& vorlu, const RunPrefs& prefs) {
  const FrequencyOption* option = findFrequencyOption(prefs.frequencyOption);
  if (option == nullptr) {
    vorlu.log(fmt::format("Error: Invalid frequencyOption key configured: {}. Run limitations will not be applied.",
                          prefs.frequencyOption));
    return true;
  }
  const FrequencyCalculation times(vorlu.platform.clock);
  vorlu.log(option->interval);
  vorlu.platform.clock.sleep(pause);
  const FrequencyReason reason = frequencyDecision(times, prefs, activityAtStart(vorlu));
  switch (reason) {
    case FrequencyReason::noActivity:
      vorlu.log(fmt::format("No updates have occurred in the last {}. Continuing...", option->period));
      break;
    case FrequencyReason::deferredSingle:
      vorlu.log(
          fmt::format("The user deferred the update in the last {} and single prompt mode is enabled. No action "
                      "is required.",
                      option->period));
      break;
    case FrequencyReason::deferredRecurring:
      vorlu.log(fmt::format("The user deferred the update in the last {} and recurring prompt mode is enabled.",
                            option->period));
      vorlu.log("Checking if the deferral period has elapsed...");
      break;
    case FrequencyReason::updated:
      vorlu.log(fmt::format("An update has occurred in the last {}. No action is required.", option->period));
      break;
  }
  return goesOn(vorlu, verdictOf(reason), false);
}

void logOnPatchDay(Log& log, PatchDayReason reason) {
  switch (reason) {
    case PatchDayReason::singleDone:
    case PatchDayReason::singleDue:
      log("Single patch day prompt mode is enabled. Checking for previous successful run today...");
      log(reason == PatchDayReason::singleDone ? "An update check has already completed today. No action is required."
                                               : "An update check has not completed today. Continuing...");
      break;
    case PatchDayReason::recurringDue:
      log("Recurring patch day prompt mode is enabled. No previous update checks have completed today. Continuing...");
      break;
    case PatchDayReason::recurringDeferred:
      log("Recurring patch day prompt mode is enabled and the user has deferred today. Checking if the deferral period "
          "has elapsed...");
      break;
    default:
      log("Recurring patch day prompt mode is enabled but the user has already updated today. No action is required.");
  }
}

void logOnOtherDay(Log& log, PatchDayReason reason, PromptMode mode, const std::string& today,
                   const std::string& patchDay) {
  if (reason == PatchDayReason::missedNotWanted) return log("Missed update prompts  are not enabled");
  if (mode == PromptMode::single) {
    log("Single prompt mode was enabled for the configured patch day");
    log(fmt::format("Today ({}) is not the configured patch day ({}). Missed update prompts are enabled...", today,
                    patchDay));
  }
  switch (reason) {
    case PatchDayReason::neverRun:
      log("The last run has not yet been recorded.");
      break;
    case PatchDayReason::missedSingle:
      log("An update check has not occurred since the last configured patch day. Continuing...");
      break;
    case PatchDayReason::madeUpSingle:
      log("An update check has occurred since the last configured patch day. No action is required.");
      break;
    case PatchDayReason::deferredSince:
      log(
          fmt::format("Today is not the configured patch day ({}). Missed update prompts and recurring patch day mode "
                      "are both enabled.",
                      patchDay));
      log("The user deferred on patch day but did not install updates. Continuing...");
      log("Checking if the deferral period has elapsed...");
      break;
    default:
      log("Missed update prompts and recurring patch day mode are both enabled. The user has updated on or since patch "
          "day. No action is required.");
  }
}

/// What a decision leaves behind besides its lines.
void applyPatchDayReason(Vorlu& vorlu, PatchDayReason reason) {
  switch (reason) {
    case PatchDayReason::singleDone:
    case PatchDayReason::madeUpSingle:
      vorlu.platform.clock.sleep(pause);
      break;
    case PatchDayReason::missedSingle:
    case PatchDayReason::deferredSince:
      writeMissedUpdateReceipt(vorlu);
      break;
    case PatchDayReason::updatedSince:
      removeMissedUpdateReceipt(vorlu);
      break;
    default:
      break;
  }
}

bool patchDayScheme(Vorlu& vorlu, const RunPrefs& prefs) {
  const FrequencyCalculation times(vorlu.platform.clock);
  const PromptMode mode = promptModeOf(prefs.patchDayFrequency);
  const std::string patchDay = weekdayName(prefs.patchDay);
  const std::string today = weekdayName(times.today());
  vorlu.log(fmt::format("{} has been configured as the cached update patch day", patchDay));
  const PatchDayReason reason = patchDayDecision(times, prefs, activityAtStart(vorlu));
  if (times.today() == prefs.patchDay) {
    vorlu.log(fmt::format("Today ({}) is the cofigured patch day ({}).", today, patchDay));
    removeMissedUpdateReceipt(vorlu);
    logOnPatchDay(vorlu.log, reason);
  } else {
    logOnOtherDay(vorlu.log, reason, mode, today, patchDay);
  }
  applyPatchDayReason(vorlu, reason);
  return goesOn(vorlu, verdictOf(reason), true);
}

}  // namespace

UpdateActivity activityAtStart(Vorlu& vorlu) {
  return {vorlu.runData.kept(&RunDataFile::LastRun), vorlu.runData.kept(&RunDataFile::UserDeferred)};
}

bool passesSchemeGate(Vorlu& vorlu) {
  const RunPrefs& prefs = vorlu.preferences.scheduled().runFrequency;
  switch (schemeOf(prefs.runType)) {
    case Scheme::frequency:
      return frequencyScheme(vorlu, prefs);
    case Scheme::patchDay:
      return patchDayScheme(vorlu, prefs);
    case Scheme::unknown:
      break;
  }
  vorlu.log(
      fmt::format("Error: Unknown Run Limitation Type specified: {}. Options are specifyFrequency or "
                  "specifyPatchDay. No run limitation will be applied.",
                  prefs.runType));
  return true;
}

}  // namespace vorlu
