#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "vorlu/detection/app_inventory.h"
#include "vorlu/detection/directory_listings.h"
#include "vorlu/detection/processor.h"
#include "vorlu/server/blueprint.h"

namespace vorlu {

struct Vorlu;

/// What one walk of the catalog asks only once. The allowed lists must not change while it lives.
struct CatalogWalk {
  explicit CatalogWalk(Vorlu& vorlu);

  DirectoryListings listings;
  Processor processor;
  std::unordered_set<std::string_view> allowedIdentifiers;
};

/// Looks for the app on this computer and changes nothing; nothing when it isn't installed.
std::optional<ApplicationInventory> lookAtApp(Vorlu& vorlu, const AppBlueprints& entry,
                                              const std::string& latestVersion, CatalogWalk& walk);

/// Whether a version method has declared its app out of scope.
bool declaresSkip(std::string_view installedVersion);

/// Whether an app that was looked at is to be updated: outdated, and in scope.
bool isDue(const ApplicationInventory& app);

/// Looks for the app on this computer and records it in `updates`: in the inventory, and as pending when
/// `latestVersion` is newer than what is installed; installers of an app that needs none are purged from the cache.
/// False when the app isn't installed, of which no record is made.
bool inspectApp(Vorlu& vorlu, const AppBlueprints& entry, const std::string& latestVersion, CatalogWalk& walk);

}  // namespace vorlu
