#include "vorlu/detection/inspect_app.h"

#include "vorlu/detection/download_cache.h"
#include "vorlu/detection/installed_version.h"
#include "vorlu/detection/letter_case.h"
#include "vorlu/detection/location.h"
#include "vorlu/detection/placeholders.h"
#include "vorlu/detection/version.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::string receiptOf(Vorlu& vorlu, const AppBlueprints& entry, CatalogWalk& walk) {
  if (!entry.installReceipts || entry.installReceipts->empty()) return "Unknown";
  return findPackageReceipt(vorlu, entry.installReceipts->front() + ".plist", walk.listings);
}

VersionSource versionSourceOf(Vorlu& vorlu, const AppBlueprints& entry, const std::string& path, CatalogWalk& walk) {
  VersionSource source{
      orEmpty(entry.latestVersionMethod), path, expandVersion(orEmpty(entry.infoPlistPath), entry), {}, {}};
  if (source.method == "shellCommand") source.script = entry.latestVersionScript.value_or("print Unknown");
  if (source.method == "pkgReceipt") source.receiptPath = receiptOf(vorlu, entry, walk);
  return source;
}

bool isAllowed(const AppBlueprints& entry, const CatalogWalk& walk) {
  if (walk.allowedIdentifiers.empty()) return true;
  return entry.appIdentifier && walk.allowedIdentifiers.contains(*entry.appIdentifier);
}

void recordInstalledApp(Vorlu& vorlu, const AppBlueprints& entry, ApplicationInventory app, CatalogWalk& walk) {
  if (!app.updateRequired) purgeCache(vorlu, orEmpty(entry.appName), walk.listings, MissingCache::fine);
  if (isDue(app)) vorlu.updates.pendingUpdates.push_back(app);
  if (!declaresSkip(app.installedVersion)) vorlu.updates.appInventoryList.push_back(std::move(app));
}

}  // namespace

CatalogWalk::CatalogWalk(Vorlu& vorlu)
    : listings(vorlu.platform.files), processor(vorlu::processor(vorlu.platform.device)) {
  const auto& allowed = vorlu.catalog.allowedUpdateIdentifiers;
  allowedIdentifiers.insert(allowed.begin(), allowed.end());
}

bool declaresSkip(std::string_view installedVersion) {
  return isInAnyCase(installedVersion, "skip");
}

bool isDue(const ApplicationInventory& app) {
  return app.updateRequired && !declaresSkip(app.installedVersion);
}

std::optional<ApplicationInventory> lookAtApp(Vorlu& vorlu, const AppBlueprints& entry,
                                              const std::string& latestVersion, CatalogWalk& walk) {
  const bool cached = listCacheContains(vorlu, orEmpty(entry.appName), walk.listings);
  std::string path = locateApp(vorlu, entry, walk.listings);
  if (path.empty()) return std::nullopt;
  const VersionSource source = versionSourceOf(vorlu, entry, path, walk);

  ApplicationInventory app;
  app.appName = entry.appName.value_or("Unknown");
  app.appIdentifier = entry.appIdentifier.value_or("Unknown");
  app.installedPath = std::move(path);
  app.installedVersion = readInstalledVersion(vorlu, source);
  app.latestVersion = latestVersion;
  app.latestVersionReleased = entry.dateReleased.value_or("Unknown");
  app.updateCached = cached;
  app.updatesAllowed = isAllowed(entry, walk);
  app.updateRequired = compareVersions(app.latestVersion, app.installedVersion) == 1;
  return app;
}

bool inspectApp(Vorlu& vorlu, const AppBlueprints& entry, const std::string& latestVersion, CatalogWalk& walk) {
  auto app = lookAtApp(vorlu, entry, latestVersion, walk);
  if (!app) return false;
  recordInstalledApp(vorlu, entry, std::move(*app), walk);
  return true;
}

}  // namespace vorlu
