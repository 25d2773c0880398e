#include "ctl/forced_look.h"

#include <fmt/format.h>

#include "ctl/schedule_steps.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/policy/deferral_window.h"
#include "vorlu/policy/forced_update.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu::ctl {
namespace {

ExplainedStep periodStep(Vorlu& vorlu, const ReceiptData& receipt, const std::string& path) {
  Clock& clock = vorlu.platform.clock;
  if (!receipt.lastRun) return decision("forced: period", true, path, "the user hasn't deferred yet");
  const std::int64_t end = deferralEnd(*receipt.lastRun, periodMinutesOf(receipt));
  const bool elapsed = deferralPeriodElapsed(receipt, static_cast<std::int64_t>(clock.now()));
  return decision("forced: period", elapsed, path,
                  fmt::format("the last deferral {} {}", elapsed ? "ended" : "ends", momentText(clock, end)));
}

/// What would hold one receipt back, in the order in which the flow asks it.
Steps gates(Vorlu& vorlu, const ReceiptData& receipt, const std::string& path) {
  const ForcedUpdatesPrefs& prefs = vorlu.preferences.forced();
  Steps steps{periodStep(vorlu, receipt, path)};
  for (ExplainedStep& step : limitSteps(vorlu.platform.clock, prefs.runLimitations, "ForcedUpdates", std::nullopt)) {
    step.topic = "forced: " + step.topic;
    steps.push_back(std::move(step));
  }
  if (firstStop(steps) != nullptr) return steps;  // before it asks what the user is doing
  steps.push_back(acceptableUseStep(vorlu, acceptableUseKeys(prefs), "ForcedUpdates"));
  steps.back().topic = "forced: acceptable use";
  return steps;
}

/// What happens with an app in use.
Fate fateInUse(Vorlu& vorlu, const ReceiptData& receipt, ForcedLook& look, const std::string& path) {
  if (!somebodyAtConsole(vorlu)) {
    look.steps.push_back(decision("forced: console", false, "console user", "nobody is logged in who could be asked"));
    return Fate::waits;
  }
  const std::int64_t left = deferralsOf(receipt).value_or(0);
  look.steps.push_back(
      {"forced: deferrals", tells, path,
       left >= 1 ? fmt::format("the user is asked and may defer (deferrals left: {})", left)
                 : fmt::format("no deferral: the user has {} minutes to save his work", graceMinutesOf(receipt))});
  return left >= 1 ? Fate::prompt : Fate::gracePrompt;
}

void lookAtMark(Vorlu& vorlu, const std::string& mark, const AppLook& app, ForcedLook& look) {
  const std::string path = forcedReceiptPath(mark);
  const ReceiptData receipt = loadForcedReceipt(vorlu.platform.files, path);
  look.steps.push_back({"forced", tells, path, fmt::format("it is marked for a forced update as \"{}\"", mark)});
  Steps held = gates(vorlu, receipt, path);
  const bool isHeld = firstStop(held) != nullptr;
  look.steps.insert(look.steps.end(), held.begin(), held.end());
  if (!isHeld) look.fate = app.inUse ? fateInUse(vorlu, receipt, look, path) : Fate::update;
}

}  // namespace

std::vector<std::string> marksOf(Vorlu& vorlu, const AppBlueprints& entry) {
  std::vector<std::string> marks;
  const auto items = vorlu.platform.files.list(paths::receipts);
  if (!items) return marks;
  for (const std::string& item : *items)
    if (const auto app = markedApp(item); app && isNamedBy(entry, *app)) marks.push_back(*app);
  return marks;
}

ForcedLook lookAtForced(Vorlu& vorlu, const AppBlueprints& entry, const AppLook& app) {
  ForcedLook look;
  for (const std::string& mark : marksOf(vorlu, entry))
    if (!look.fate) lookAtMark(vorlu, mark, app, look);  // the first to act has the user's answer for the others
  if (look.fate) return look;
  for (ExplainedStep& step : look.steps)
    step.verdict = tells;  // what holds a mark back leaves the update its other way
  return look;
}

}  // namespace vorlu::ctl
