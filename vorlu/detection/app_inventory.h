#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorlu/state/record.h"

namespace vorlu {

/// One application found on this computer.
struct ApplicationInventory {
  std::string appName;
  std::string appIdentifier;
  std::string installedPath;
  std::string installedVersion;  ///< "Unknown" when it can't be read
  std::string latestVersion;     ///< the effective one
  std::string latestVersionReleased;
  bool updateRequired = false;
  bool updateCached = false;
  bool updatesAllowed = false;
  static constexpr auto fields() {
    using A = ApplicationInventory;
    return std::array{field<&A::appName>("appName"),
                      field<&A::appIdentifier>("appIdentifier"),
                      field<&A::installedPath>("installedPath"),
                      field<&A::installedVersion>("installedVersion"),
                      field<&A::latestVersion>("latestVersion"),
                      field<&A::latestVersionReleased>("latestVersionReleased"),
                      field<&A::updateRequired>("updateRequired"),
                      field<&A::updateCached>("updateCached"),
                      field<&A::updatesAllowed>("updatesAllowed")};
  }
};

/// Run/appInventory.json.
struct AppInventory {
  std::optional<std::vector<ApplicationInventory>> appInventory;
  static constexpr auto fields() { return std::array{field<&AppInventory::appInventory>("appInventory")}; }
};

}  // namespace vorlu
