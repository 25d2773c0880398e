#include "ctl/timeline.h"

#include <fmt/format.h>

#include <limits>

#include "ctl/explained_step.h"
#include "ctl/rehearsal_mac.h"
#include "ctl/schedule_steps.h"
#include "vorlu/policy/scheduled_update_flow.h"
#include "vorlu/prompts/update_prompt.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/property_list.h"
#include "vorlu/vorlu.h"

namespace vorlu::ctl {
namespace {

constexpr std::int64_t quarter = 900;  ///< seconds between two recurring runs
constexpr std::int64_t day = 86400;

/// The rehearsed application must be one that the profile allows.
CustomPrefs withoutLists(CustomPrefs prefs) {
  prefs.GeneralOptions.allowedAppUpdates.reset();
  prefs.GeneralOptions.excludedAppUpdates.reset();
  return prefs;
}

/// A rehearsal under way.
struct Rehearsal {
  const RehearsalPlan& plan;
  const Site& site;
  const CustomPrefs prefs;
  RehearsalMac mac{plan, prefs};
  std::vector<TimelineEntry> entries = {};
  std::string lastReason = {};
  std::int64_t nextRelease = plan.start;

  std::string timeText(std::int64_t moment) { return momentText(mac.clock, moment); }
  std::int64_t now() { return static_cast<std::int64_t>(mac.clock.now()); }
};

void releaseIfDue(Rehearsal& at) {
  if (at.now() < at.nextRelease) return;
  at.nextRelease =
      at.plan.releaseEvery > 0 ? at.nextRelease + at.plan.releaseEvery * day : std::numeric_limits<std::int64_t>::max();
  at.mac.release();
  at.entries.push_back({at.timeText(at.now()), "released", {}, {}, "version " + at.mac.releasedVersion()});
}

/// Why this run will not ask; nothing where no reason is known.
std::optional<ExplainedStep> reasonToWait(Rehearsal& at) {
  if (!at.prefs.GeneralOptions.updatePrompts)
    return decision("prompts", false, "GeneralOptions.updatePrompts", "recurring runs don't ask");
  Vorlu look(at.mac.platform(), at.site);
  const Steps gates = timeGates(look);
  const ExplainedStep* stop = firstStop(gates);
  return stop == nullptr ? std::nullopt : std::optional(*stop);
}

/// What a recurring run does after its check.
void runScheduledFlow(Rehearsal& at) {
  if (!at.prefs.GeneralOptions.updatePrompts) return;
  Vorlu run(at.mac.platform(), at.site);
  run.modes.runMode = true;
  run.runData.now = at.now();
  run.catalog.entries = at.mac.catalog();
  try {
    scheduledUpdateFlow(run, "run");
  } catch (const RunEnded&) {
    // A deferral ends the process.
  }
}

std::string sentenceOf(const Rehearsal& at, const SeenPrompt& prompt) {
  const std::int64_t minutes = usableGraceMinutes(at.prefs.ScheduledUpdates.gracePeriodMinutes);
  if (prompt.hasGrace) {
    const char* does = prompt.answer == UserAnswer::update ? "agrees at once"
                       : prompt.answer == UserAnswer::quit ? "kills the prompt"
                                                           : "lets the time run out";
    return fmt::format("the user is told that he has {} minutes to save his work, and {}", minutes, does);
  }
  const std::string may = prompt.left ? fmt::format("deferrals left: {}", *prompt.left) : "deferrals without a limit";
  const char* does = prompt.answer == UserAnswer::update   ? "agrees"
                     : prompt.answer == UserAnswer::defer  ? "defers"
                     : prompt.answer == UserAnswer::ignore ? "leaves the prompt standing until he logs out"
                                                           : "kills the prompt, which counts as a deferral";
  return fmt::format("the user is asked ({}) and {}", may, does);
}

void notePrompts(Rehearsal& at, const std::vector<SeenPrompt>& seen) {
  for (std::size_t index = 0; index < seen.size(); ++index) {
    const SeenPrompt& prompt = seen[index];
    if (index > 0 && !prompt.hasGrace && !seen[index - 1].hasGrace) continue;  // the same one, brought back
    at.entries.push_back({at.timeText(prompt.time), prompt.hasGrace ? "grace" : "asked", prompt.left,
                          nameOf(prompt.answer), sentenceOf(at, prompt)});
  }
}

/// A reason is told once, until something else happens.
void noteReason(Rehearsal& at, const std::string& when, const std::optional<ExplainedStep>& reason) {
  const std::string name = reason ? reason->topic + reason->decidedBy : "";
  if (reason && name != at.lastReason)
    at.entries.push_back(
        {when, "notAsked", {}, {}, fmt::format("{}: {}  [{}]", reason->topic, reason->detail, reason->decidedBy)});
  at.lastReason = name;
}

void oneRun(Rehearsal& at) {
  releaseIfDue(at);
  at.mac.beginRun();
  const bool wasOutdated = at.mac.isOutdated();
  const std::string when = at.timeText(at.now());
  const std::optional<ExplainedStep> reason = reasonToWait(at);
  runScheduledFlow(at);
  const std::vector<SeenPrompt> seen = at.mac.takeSeen();
  notePrompts(at, seen);
  if (wasOutdated && !at.mac.isOutdated())
    at.entries.push_back({at.timeText(at.now()), "updated", {}, {}, "version " + at.mac.installedVersion()});
  noteReason(at, when, wasOutdated && seen.empty() && at.mac.isOutdated() ? reason : std::nullopt);
}

}  // namespace

Result<std::vector<TimelineEntry>> rehearse(const RehearsalPlan& plan, const Site& site) {
  const auto prefs = decodePropertyList<CustomPrefs>(plan.preferences);
  if (!prefs) return prefs.failure();
  Rehearsal at{plan, site, withoutLists(*prefs)};
  const std::int64_t end = plan.start + plan.days * day;
  for (std::int64_t slot = plan.start; slot < end; slot += quarter) {
    if (at.now() > slot + quarter) continue;  // a prompt still stood
    at.mac.clock.moveTo(std::max(at.mac.clock.now(), static_cast<Seconds>(slot)));
    if (at.mac.isUserThere()) oneRun(at);
  }
  return std::move(at.entries);
}

}  // namespace vorlu::ctl
