#include "vorlu/detection/find_app.h"

#include <fmt/format.h>

#include "vorlu/detection/installed_version.h"
#include "vorlu/detection/location.h"
#include "vorlu/detection/placeholders.h"
#include "vorlu/server/catalog_fetch.h"
#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

void loadCatalog(Vorlu& vorlu, CatalogSource source) {
  switch (source) {
    case CatalogSource::offline:
      vorlu.catalog.offlineMode = true;
      fetchCatalog(vorlu, true);
      return;
    case CatalogSource::online:
      vorlu.catalog.offlineMode = false;
      fetchCatalog(vorlu, true);
      return;
    case CatalogSource::loaded:
      if (vorlu.catalog.entries.empty()) fetchCatalog(vorlu, false);
      return;
  }
}

/// Last path component without ".app".
std::string nameOfItem(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return replacedAll(path.substr(path.rfind('/') + 1), ".app", "");
}

void copyEntry(Vorlu& vorlu, const AppBlueprints& entry) {
  CurrentApp& app = vorlu.currentApp;
  app.copyFields(entry);
  for (std::string* text :
       {&app.infoPlistPath, &app.universalDownloadURLCode, &app.intelDownloadURLCode, &app.siliconDownloadURLCode}) {
    *text = expandVersion(*text, entry);
  }
  app.appPath = expandAppPath(vorlu, entry);
  for (std::string& path : app.alternatePaths) path = expandAlternatePath(vorlu, path);
}

/// Another app's location must not outlive the selection.
void locateCurrentApp(Vorlu& vorlu, const AppBlueprints& entry) {
  CurrentApp& app = vorlu.currentApp;
  app.installedPath = locateApp(vorlu, entry);
  app.installedName.clear();
  app.installedBundleIdentifier.clear();
  if (app.installedPath.empty()) return;
  app.installedName = nameOfItem(app.installedPath);
  if (app.appType == "appBundle") app.installedBundleIdentifier = readBundleIdentifier(vorlu, app.installedPath);
}

}  // namespace

bool isNamedBy(const AppBlueprints& entry, std::string_view searchText) {
  return entry.appName == searchText || entry.appIdentifier == searchText || entry.serverName == searchText ||
         entry.legacyServerName == searchText;
}

const AppBlueprints* matchApp(Vorlu& vorlu, std::string_view searchText) {
  if (searchText.empty()) return nullptr;  // it would match every key that the catalog leaves empty
  const AppBlueprints* last = nullptr;
  for (const AppBlueprints& entry : vorlu.catalog.entries) {
    if (!isNamedBy(entry, searchText)) continue;
    if (entry.appIdentifier != searchText) vorlu.currentApp.legacyIdentifierUsed = true;
    last = &entry;
  }
  return last;
}

bool findApp(Vorlu& vorlu, const std::string& searchText, CatalogSource source) {
  loadCatalog(vorlu, source);
  const AppBlueprints* entry = matchApp(vorlu, searchText);
  if (entry == nullptr) return false;
  copyEntry(vorlu, *entry);
  locateCurrentApp(vorlu, *entry);
  vorlu.currentApp.progressTitle = fmt::format("Updating {} ({} of {})", vorlu.currentApp.appName,
                                               vorlu.updates.currentUpdateNumber, vorlu.updates.pendingUpdates.size());
  return true;
}

}  // namespace vorlu
