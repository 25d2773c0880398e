#include "vorlu/policy/update_check_flow.h"

#include "vorlu/detection/update_check.h"
#include "vorlu/install/component_update.h"
#include "vorlu/install/icon_sync.h"
#include "vorlu/install/self_update.h"
#include "vorlu/policy/update_pass.h"
#include "vorlu/state/run_data.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

void announce(Vorlu& vorlu, bool hourly) {
  setCurrentRunType(vorlu, hourly ? "hourlyUpdateCheck" : "manualUpdateCheck");
  vorlu.log(hourly ? "Checking for new updates..." : "Checking for updates. Please wait...");
}

/// An app in use still waits for its update, so the computer isn't compliant yet; one that failed doesn't count. A
/// check that found nothing pending has stored the date already.
void noteCompliance(Vorlu& vorlu, const PassResult& pass) {
  if (pass.nothingPending) {
    vorlu.updates.compliantThisRun = true;
  } else if (!pass.inUse) {
    recordCompliance(vorlu);
  }
}

/// The agent itself, its component and the icons of its prompts.
void keepAgentCurrent(Vorlu& vorlu) {
  if (vorlu.preferences.general().autoUpdate && isAlone(vorlu)) {
    selfUpdate(vorlu);
    updateComponents(vorlu, true);
  }
  syncIcons(vorlu);
}

}  // namespace

void updateCheckFlow(Vorlu& vorlu, bool hourly) {
  announce(vorlu, hourly);
  // Beside another agent, which may be installing, this one only fetches.
  const PassResult pass = runUpdatePass(vorlu, {.cacheOnly = !isAlone(vorlu)});
  noteCompliance(vorlu, pass);
  checkForUpdates(vorlu, "", true);
  vorlu.modes.runStage = "N/A";
  if (!hourly) return;
  keepAgentCurrent(vorlu);
  vorlu.updates.hourlyCheckRan = true;
  updateRunData(vorlu, RunDataSelector::nextUpdateAttempt);
}

}  // namespace vorlu
