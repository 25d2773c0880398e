#include "vorlu/install/install_permission.h"

#include <algorithm>

namespace vorlu {

InstallPermission installPermission(const std::string& appIdentifier, const std::string& serverName,
                                    const std::vector<std::string>& allowed, const std::vector<std::string>& excluded) {
  const auto isNamedIn = [&](const std::vector<std::string>& list) {
    return std::any_of(list.begin(), list.end(), [&](const std::string& name) {
      return !name.empty() && (name == appIdentifier || name == serverName);
    });
  };
  const bool isExcluded = isNamedIn(excluded);
  if (isNamedIn(allowed)) return isExcluded ? InstallPermission::onBothLists : InstallPermission::allowed;
  return allowed.empty() && !isExcluded ? InstallPermission::allowed : InstallPermission::notOnAllowedList;
}

}  // namespace vorlu
