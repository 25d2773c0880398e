#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "vorlu/detection/find_app.h"
#include "vorlu/server/catalog_fetch.h"
#include "vorlu/state/end_run.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

bool holds(const std::vector<std::string>& list, const std::string& text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

void collectCatalogIdentifiers(Vorlu& vorlu) {
  Catalog& catalog = vorlu.catalog;
  for (const AppBlueprints& entry : catalog.entries) {
    if (!entry.appIdentifier) {
      vorlu.log(fmt::format("Error: No app identifier was found for {}. If this issue persists, contact {}",
                            orEmpty(entry.appName), vorlu.site.supportContact()));
    } else if (!entry.appIdentifier->empty()) {
      catalog.catalogIdentifiersForInstall.push_back(*entry.appIdentifier);
      catalog.catalogIdentifiersForUpdate.push_back(*entry.appIdentifier);
    }
  }
}

void stopWithoutCatalog(Vorlu& vorlu) {
  const std::string& contact = vorlu.site.supportContact();
  fatalStop(vorlu,
            fmt::format("Error: Could not collect Vorlu App information. If the problem persists, contact {}", contact),
            fmt::format("Error: Could not collect App information. If the problem persists, contact {}", contact));
}

/// The entries that the texts of a preference name, in order, with the text; null where none is meant. The last one
/// found stays selected, so only that one is looked for on the disk.
template <class Use>
void selectEach(Vorlu& vorlu, const std::vector<std::string>& texts, Use use) {
  const std::string* lastFound = nullptr;
  for (const std::string& text : texts) {
    const AppBlueprints* entry = matchApp(vorlu, text);
    if (entry != nullptr) lastFound = &text;
    use(text, entry);
  }
  if (lastFound != nullptr) (void)findApp(vorlu, *lastFound);
}

/// Every app of the catalog but the excluded ones.
void allowAllBut(Vorlu& vorlu, const std::vector<std::string>& excluded) {
  Catalog& catalog = vorlu.catalog;
  if (catalog.catalogIdentifiersForUpdate.empty()) stopWithoutCatalog(vorlu);
  catalog.allowedUpdateIdentifiers = catalog.catalogIdentifiersForUpdate;
  catalog.allowedInstallIdentifiers = catalog.catalogIdentifiersForInstall;
  selectEach(vorlu, excluded, [&catalog](const std::string&, const AppBlueprints* entry) {
    if (entry == nullptr || !entry->appIdentifier) return;
    std::erase(catalog.allowedUpdateIdentifiers, *entry->appIdentifier);
    std::erase(catalog.allowedInstallIdentifiers, *entry->appIdentifier);
  });
}

/// The allowed apps alone; exclusion beats allowance.
void allowOnly(Vorlu& vorlu, const std::vector<std::string>& allowed, const std::vector<std::string>& excluded) {
  selectEach(vorlu, allowed, [&](const std::string& text, const AppBlueprints* entry) {
    if (entry == nullptr || orEmpty(entry->appIdentifier).empty()) {
      vorlu.log(fmt::format("Error: Invalid App identifier specified in the allowed App updates list: {}", text));
      vorlu.log("For valid App identifiers, see the App catalog");
      return;
    }
    const std::string& identifier = *entry->appIdentifier;
    if (holds(excluded, identifier)) {
      vorlu.log(
          fmt::format("Warning: {0} was defined in the allowed update array but was also found in the excluded "
                      "update array. {0} updates will not be allowed",
                      orEmpty(entry->appName)));
      return;
    }
    vorlu.catalog.allowedInstallIdentifiers.push_back(identifier);
    vorlu.catalog.allowedUpdateIdentifiers.push_back(identifier);
  });
}

}  // namespace

void buildAllowedLists(Vorlu& vorlu) {
  Catalog& catalog = vorlu.catalog;
  catalog.catalogIdentifiersForInstall.clear();
  catalog.catalogIdentifiersForUpdate.clear();
  catalog.allowedInstallIdentifiers.clear();
  catalog.allowedUpdateIdentifiers.clear();
  if (catalog.entries.empty()) fetchCatalog(vorlu, false);
  collectCatalogIdentifiers(vorlu);

  const GeneralOptionPrefs& preferences = vorlu.preferences.general();
  const std::vector<std::string> allowed = preferences.allowedAppUpdates.value_or(TextList{});
  const std::vector<std::string> excluded = preferences.excludedAppUpdates.value_or(TextList{});
  if (allowed.empty()) {
    allowAllBut(vorlu, excluded);
  } else {
    allowOnly(vorlu, allowed, excluded);
  }
}

}  // namespace vorlu
