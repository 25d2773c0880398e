#pragma once

#include <string>

#include "vorlu/detection/directory_listings.h"
#include "vorlu/server/blueprint.h"

namespace vorlu {

struct Vorlu;

/// First existing location of an app, in the order appPath, alternatePaths, prefix search; empty when it isn't
/// installed. Alternate and prefix hits are logged for the file alone.
std::string locateApp(Vorlu& vorlu, const AppBlueprints& entry);
std::string locateApp(Vorlu& vorlu, const AppBlueprints& entry, DirectoryListings& listings);

}  // namespace vorlu
