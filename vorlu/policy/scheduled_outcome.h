#pragma once

#include <string>
#include <vector>

#include "vorlu/detection/app_inventory.h"
#include "vorlu/policy/deferrals.h"
#include "vorlu/policy/scheduled_rules.h"
#include "vorlu/policy/update_run.h"

namespace vorlu {

struct Vorlu;

/// Logs what is about to be asked for.
void logFoundUpdates(Vorlu& vorlu, const std::vector<ApplicationInventory>& updates);

/// The end of a run that found nothing to ask for: deferrals start afresh, unless it is a test. In Self Service the
/// user is told, and the run ends.
void endWithoutUpdates(Vorlu& vorlu, Trigger trigger, const std::string& dialogIcon);

/// What the outcome of an update run is told with.
struct UpdateConclusion {
  DeferralMode deferralMode;
  std::string dialogIcon;
  UpdateRunSettings settings;
  std::string completeMessage;
  std::vector<ApplicationInventory> updates;
};
/// The end of a run that has updated: deferrals start afresh when all went well, else the user is told what failed and
/// keeps the count. Looks for updates once more.
void concludeUpdates(Vorlu& vorlu, const UpdateConclusion& conclusion);

}  // namespace vorlu
