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

}  // namespace vorlu
