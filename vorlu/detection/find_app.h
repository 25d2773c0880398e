#pragma once

#include <string>
#include <string_view>

#include "vorlu/server/blueprint.h"

namespace vorlu {

struct Vorlu;

/// Which catalog a search may load.
enum class CatalogSource { loaded, offline, online };

/// Selects the catalog entry whose name, identifier or legacy key is `searchText` into `currentApp`, and locates it on
/// this computer. False when nothing matched: `currentApp` is then as it was. May end the run through the catalog
/// fetch.
[[nodiscard]] bool findApp(Vorlu& vorlu, const std::string& searchText, CatalogSource source = CatalogSource::loaded);

/// Whether a search for `searchText` means this entry: its name, identifier or a legacy key.
bool isNamedBy(const AppBlueprints& entry, std::string_view searchText);

/// The last entry of the loaded catalog that `searchText` names; null without one. Notes in `currentApp` when a match
/// went by another key than the identifier, and selects nothing.
const AppBlueprints* matchApp(Vorlu& vorlu, std::string_view searchText);

/// Fills the four identifier lists from the catalog and the preferences. Ends the run with 1 when there is no catalog
/// and no allowed list.
void buildAllowedLists(Vorlu& vorlu);

}  // namespace vorlu
