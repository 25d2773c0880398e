#pragma once

#include <string>
#include <vector>

#include "vorlu/detection/app_inventory.h"

namespace vorlu {

/// Which walk of the catalog filled `pendingUpdates`.
enum class Walk {
  none,
  full,     ///< allowed apps that are due: the only list that may be installed from or shown to a user
  refresh,  ///< every app, allowed or not
  single,   ///< one named app
};

/// What the update checks of this process found, and what became of it.
struct UpdateState {
  std::vector<ApplicationInventory> appInventoryList;
  std::vector<ApplicationInventory> pendingUpdates;
  Walk pendingFrom = Walk::none;
  bool singleAppUpdateFound = false;
  bool compliantThisRun = false;  ///< a full check found nothing pending

  ApplicationInventory currentUpdate;                ///< the record under work
  std::vector<ApplicationInventory> skippedUpdates;  ///< in use at the last full pass
  std::vector<std::string> forcedApps;               ///< names of apps that a forced update of this run has handled
  std::vector<std::string> failedUpdates;            ///< `serverName` of failed applications, each once
  std::vector<std::string> failedAppNames;           ///< `appName` of what failed in the last pass or update run
  std::vector<std::string> updatesInstalled;         ///< `appName` of what succeeded
  int currentUpdateNumber = 0;

  bool passDone = false;        ///< a full check ran in this process, and what it found was updated or cached
  bool hourlyCheckRan = false;  ///< by the hourly job of `--update run`
  bool updatesRan = false;      ///< the scheduled flow updated something, or tried to
};

/// Keeps the name among those that failed, each once.
void noteFailedUpdate(UpdateState& updates, const std::string& serverName);
/// An update that went through takes back what an earlier attempt of this run noted.
void noteUpdate(UpdateState& updates, const std::string& serverName, const std::string& appName);

/// Whether a forced update of this run has handled the app.
bool wasForced(const UpdateState& updates, const ApplicationInventory& app);

}  // namespace vorlu
