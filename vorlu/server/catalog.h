#pragma once

#include <string>
#include <vector>

#include "vorlu/server/blueprint.h"

namespace vorlu {

/// The catalog of this process and the lists that follow from it.
struct Catalog {
  std::vector<AppBlueprints> entries;  ///< empty: not loaded yet
  bool offlineMode = false;            ///< use the local copy, make no catalog request

  std::vector<std::string> catalogIdentifiersForInstall;
  std::vector<std::string> catalogIdentifiersForUpdate;
  std::vector<std::string> allowedInstallIdentifiers;
  std::vector<std::string> allowedUpdateIdentifiers;
};

}  // namespace vorlu
