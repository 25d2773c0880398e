#include "vorlu/detection/update_state.h"

#include <algorithm>

namespace vorlu {

void noteFailedUpdate(UpdateState& updates, const std::string& serverName) {
  auto& failed = updates.failedUpdates;
  if (std::find(failed.begin(), failed.end(), serverName) == failed.end()) failed.push_back(serverName);
}

void noteUpdate(UpdateState& updates, const std::string& serverName, const std::string& appName) {
  std::erase(updates.failedUpdates, serverName);
  updates.updatesInstalled.push_back(appName);
}

bool wasForced(const UpdateState& updates, const ApplicationInventory& app) {
  const std::vector<std::string>& forced = updates.forcedApps;
  return std::find(forced.begin(), forced.end(), app.appName) != forced.end();
}

}  // namespace vorlu
