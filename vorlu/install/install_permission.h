#pragma once

#include <string>
#include <vector>

namespace vorlu {

/// What the administrator's install lists say of an app.
enum class InstallPermission {
  allowed,
  onBothLists,       ///< allowed and excluded: exclusion wins
  notOnAllowedList,  ///< excluded, or missing from an allowed list that holds something
};

/// The lists name apps by `appIdentifier` or `serverName`. An allowed list without entries allows every app that isn't
/// excluded.
InstallPermission installPermission(const std::string& appIdentifier, const std::string& serverName,
                                    const std::vector<std::string>& allowed, const std::vector<std::string>& excluded);

}  // namespace vorlu
