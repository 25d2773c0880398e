#pragma once

#include <optional>
#include <string>

#include "ctl/explained_step.h"
#include "ctl/fate.h"
#include "vorlu/detection/app_inventory.h"
#include "vorlu/server/blueprint.h"

namespace vorlu {
struct Vorlu;
}

namespace vorlu::ctl {

/// Of the step about the lists of the preferences.
inline constexpr const char* listsTopic = "lists";

/// What catalog, preferences and disk tell of one application, whatever the time is.
struct AppLook {
  Steps steps;
  std::optional<Fate> hindrance;  ///< why it isn't updated at all; the lists of the preferences aside
  bool isListed = false;          ///< by those lists
  bool hasUnknownType = false;    ///< its installer can be fetched and not opened
  bool inUse = false;             ///< runs, and has to quit for its update
  std::optional<ApplicationInventory> found;
};

/// Looks with the agent's own functions. `entry` is in the loaded catalog, whose allowed lists are built. Without
/// `runScripts` no version script of the catalog is run.
AppLook lookAt(Vorlu& vorlu, const AppBlueprints& entry, bool runScripts);

}  // namespace vorlu::ctl
