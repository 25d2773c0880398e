#include "vorlu/detection/update_check.h"

#include <fmt/format.h>

#include "vorlu/detection/download_cache.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/detection/inspect_app.h"
#include "vorlu/server/catalog_fetch.h"
#include "vorlu/state/format_date.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

void beginLists(UpdateState& updates, Walk kind) {
  updates.appInventoryList.clear();
  updates.pendingUpdates.clear();
  updates.pendingFrom = kind;
  if (kind == Walk::full) updates.skippedUpdates.clear();
}

/// Why an entry isn't looked at.
enum class Barred { no, byMissingVersion, byCatalog, byProcessor };

Barred barred(const AppBlueprints& entry, const std::string& latestVersion, Processor processor) {
  if (latestVersion.empty()) return Barred::byMissingVersion;
  if (!entry.updatesAllowed.value_or(true)) return Barred::byCatalog;
  return lacksBuild(entry, processor) ? Barred::byProcessor : Barred::no;
}

/// Inspects the app unless this processor has no build of it.
void architectureGate(Vorlu& vorlu, const AppBlueprints& entry, const std::string& latestVersion, CatalogWalk& walk) {
  if (barred(entry, latestVersion, walk.processor) != Barred::byProcessor) {
    inspectApp(vorlu, entry, latestVersion, walk);
  } else if (walk.processor == Processor::silicon) {
    vorlu.log(fmt::format("{} is not universal and not supported on Apple Silicon Macs. Skipping update check...",
                          orEmpty(entry.appName)));
  } else {
    vorlu.log(fmt::format("{} is not universal and not supported on Intel Macs. Skipping update check...",
                          orEmpty(entry.appName)));
  }
}

void reportSingleApp(Vorlu& vorlu, const AppBlueprints& entry, const std::string& effectiveVersion) {
  const std::string& name = *entry.appName;
  UpdateState& updates = vorlu.updates;
  updates.singleAppUpdateFound = !updates.pendingUpdates.empty();
  if (!updates.singleAppUpdateFound) vorlu.log(fmt::format("No updates found for {}", name));
  const std::string& version = orEmpty(entry.latestVersion).empty() ? effectiveVersion : *entry.latestVersion;
  for (const ApplicationInventory& pending : updates.pendingUpdates) {
    if (pending.appName != name) continue;
    vorlu.log(fmt::format("Update found for {}. Need to install v{}", name, version));
  }
}

/// One entry of a walk. With an app's name only entries of that name are looked at, allowed or not.
void checkEntry(Vorlu& vorlu, const AppBlueprints& entry, const std::string& wantedName, CatalogWalk& walk) {
  const std::string& latestVersion = effectiveLatestVersion(entry, walk.processor);
  const Barred bar = barred(entry, latestVersion, walk.processor);
  if (bar == Barred::byMissingVersion) {
    vorlu.log(fmt::format("Error: No latest version found for {}. Unable to check for updates for this App",
                          orEmpty(entry.appName)));
    return;
  }
  if (!wantedName.empty() && entry.appName != wantedName) return;
  if (bar == Barred::byCatalog) {
    vorlu.log(fmt::format("Skipping update check for {} because updates are not available for this App via Vorlu",
                          orEmpty(entry.appName)));
    purgeCache(vorlu, orEmpty(entry.appName), walk.listings, MissingCache::logged);
    return;
  }
  if (!wantedName.empty()) {
    vorlu.log(fmt::format("Checking for {} updates...", wantedName));
    architectureGate(vorlu, entry, latestVersion, walk);
    reportSingleApp(vorlu, entry, latestVersion);
    return;
  }
  const bool allowed = entry.appIdentifier && walk.allowedIdentifiers.contains(*entry.appIdentifier);
  if (allowed || vorlu.updates.pendingFrom == Walk::refresh) architectureGate(vorlu, entry, latestVersion, walk);
}

void clearInventoryPath(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (!files.isDirectory(paths::appInventory)) return;
  const Status removed = files.remove(paths::appInventory);
  if (!removed) vorlu.log(fmt::format("Error removing the existing App Inventory data: {}", removed.error()));
}

void writeInventory(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  vorlu.log("Updating installed App inventory...");
  clearInventoryPath(vorlu);
  const std::string text = encodeJson(AppInventory{vorlu.updates.appInventoryList}, JsonLayout::pretty);
  const Result<std::string> stored = files.read(paths::appInventory);
  if (stored && *stored == text) return;  // syncing the same text again would cost more than the walk
  const Status written = files.writeAtomically(paths::appInventory, text, {0644, "root", "wheel"});
  if (!written) {
    vorlu.log(fmt::format("Error writing to App Inventory JSON file: {}", written.error()));
    return;
  }
  files.setHidden(paths::appInventory);
}

void summarise(Vorlu& vorlu) {
  const auto& pending = vorlu.updates.pendingUpdates;
  if (pending.empty()) {
    vorlu.log("No updates are required");
    recordCompliance(vorlu);
    return;
  }
  std::string list;
  for (const ApplicationInventory& app : pending) {
    list += fmt::format("{}{} v{}", list.empty() ? "" : ", ", app.appName, app.latestVersion);
  }
  list += '.';
  vorlu.log(pending.size() == 1 ? fmt::format("Update required: {}", list) : fmt::format("Updates required: {}", list));
}

}  // namespace

void checkForUpdates(Vorlu& vorlu, const std::string& appName, bool refreshOnly) {
  const bool everyApp = appName.empty();
  if (everyApp) buildAllowedLists(vorlu);
  beginLists(vorlu.updates, !everyApp ? Walk::single : refreshOnly ? Walk::refresh : Walk::full);
  if (vorlu.catalog.entries.empty()) fetchCatalog(vorlu, false);
  CatalogWalk walk(vorlu);
  for (const AppBlueprints& entry : vorlu.catalog.entries) checkEntry(vorlu, entry, appName, walk);
  if (!everyApp) return;
  writeInventory(vorlu);
  if (refreshOnly) return;
  cleanCache(vorlu);
  summarise(vorlu);
}

bool needsUpdate(Vorlu& vorlu, const AppBlueprints& entry) {
  CatalogWalk walk(vorlu);
  const std::string& latestVersion = effectiveLatestVersion(entry, walk.processor);
  if (barred(entry, latestVersion, walk.processor) != Barred::no) return false;
  const auto app = lookAtApp(vorlu, entry, latestVersion, walk);
  return app && isDue(*app);
}

void recordCompliance(Vorlu& vorlu) {
  vorlu.runData.lastCompliantText = formatDate(vorlu.platform.clock, vorlu.platform.clock.now(), DateForm::fullStamp);
  updateRunData(vorlu, RunDataSelector::lastCompliant);
}

}  // namespace vorlu
