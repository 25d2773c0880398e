#pragma once

#include <string>
#include <vector>

#include "vorlu/platform/result.h"
#include "vorlu/server/blueprint.h"

namespace vorlu {

struct Vorlu;

/// Fills `catalog`: from the server when a window is due, else from the local copy. Ends the run with 1 when neither
/// gives a catalog. With `skipWindowCheck` the caller's `offlineMode` decides.
void fetchCatalog(Vorlu& vorlu, bool skipWindowCheck);

/// The entries of a catalog's JSON.
Result<std::vector<AppBlueprints>> decodeCatalog(std::string text);

/// Fills `catalog` from the local copy or ends the run with 1.
void loadOfflineCatalog(Vorlu& vorlu);

/// Whether this run is to ask the server for the catalog; if so, stamps `LastServerTimestamp`, whatever the server then
/// answers: one failed attempt uses up a window.
bool isServerDue(Vorlu& vorlu);

/// Where the catalog of this run lies: of the live label, or of the testing label in a testing run.
struct CatalogEndpoint {
  std::string url;
  std::string token;
};
/// Empty texts for a label that the inventory lacks. May end the run through the key material.
CatalogEndpoint catalogEndpoint(Vorlu& vorlu);

}  // namespace vorlu
