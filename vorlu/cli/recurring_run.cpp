#include "vorlu/cli/recurring_run.h"

#include <algorithm>
#include <limits>

#include "vorlu/cli/initialise_run.h"
#include "vorlu/policy/forced_update_flow.h"
#include "vorlu/policy/scheduled_update_flow.h"
#include "vorlu/policy/update_check_flow.h"
#include "vorlu/reporting/report.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/run_schedule.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// Beside another agent, which may be asking or installing, this one does neither.
void forcedStep(Vorlu& vorlu) {
  vorlu.modes.runStage = "ForcedUpdates";
  if (!isAlone(vorlu)) return;
  announceForcedUpdates(vorlu);
  forcedUpdateFlow(vorlu);
}

void hourlyStep(Vorlu& vorlu) {
  vorlu.modes.hourlyMode = true;
  vorlu.modes.runStage = "BackgroundUpdates";
  switch (hourlyStepAt(vorlu.runData.now, vorlu.preferences.general().hourlyCheck,
                       vorlu.runData.kept(&RunDataFile::NextUpdateAttempt))) {
    case HourlyStep::disabled:
      return vorlu.log("Hourly update checks are disabled, skipping update check");
    case HourlyStep::early:
      return vorlu.log("Not enough time has elapsed since the last hourly update attempt");
    case HourlyStep::due:
      return updateCheckFlow(vorlu, true);
  }
}

void scheduledStep(Vorlu& vorlu) {
  if (!vorlu.preferences.general().updatePrompts) {
    vorlu.log("Recurring update prompts are disabled");
    return;
  }
  vorlu.modes.runStage = "ScheduledUpdates";
  // Beside another agent, which may be asking or installing, this one does neither.
  if (isAlone(vorlu)) scheduledUpdateFlow(vorlu, "run");
}

}  // namespace

void recurringRun(Vorlu& vorlu) {
  vorlu.modes.runStage = "Initialising";
  vorlu.log("Initialising run mechanism...");
  vorlu.runData.now = static_cast<std::int64_t>(vorlu.platform.clock.now());
  vorlu.modes.runMode = true;
  constexpr std::int64_t farAway = std::numeric_limits<std::int64_t>::max() - reportInterval;
  const std::int64_t reportDue = std::min(vorlu.runData.kept(&RunDataFile::LastReport), farAway) + reportInterval;
  initialiseRun(vorlu, {.offlineTolerated = true});
  forcedStep(vorlu);
  hourlyStep(vorlu);
  scheduledStep(vorlu);
  reportStep(vorlu, reportDue);
  endRun(vorlu, vorlu.modes.runExitStatus);
}

}  // namespace vorlu
