#include "vorlu/detection/download_cache.h"

#include <fmt/format.h>

#include <unordered_set>

#include "vorlu/state/paths.h"
#include "vorlu/state/replacement.h"
#include "vorlu/state/stale_files.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::string fileNameText(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c == '/' || c == '\0') c = '-';
  }
  return result;
}

std::string cacheName(std::string_view appName) {
  return fileNameText(replacedAll(appName, " ", ""));
}

std::string cachedPath(const std::string& item) {
  return fmt::format("{}/{}", paths::downloads, item);
}

/// The name of a cached file without its extension, as `cacheFileStem` made it.
std::string withoutExtensions(std::string_view item) {
  std::string name(item);
  for (const std::string_view extension : {".dmg", ".pkg", ".zip", ".tbz"}) name = replacedAll(name, extension, "");
  return name;
}

std::unordered_set<std::string> wantedStems(const UpdateState& updates) {
  std::unordered_set<std::string> stems;
  for (const ApplicationInventory& pending : updates.pendingUpdates) {
    stems.insert(cacheFileStem(pending.appName, pending.latestVersion));
  }
  return stems;
}

}  // namespace

std::string cacheFileStem(std::string_view appName, std::string_view version) {
  return fmt::format("{}-v{}", cacheName(appName), fileNameText(version));
}

bool listCacheContains(Vorlu& vorlu, const std::string& appName, DirectoryListings& listings) {
  const auto& items = listings.of(paths::downloads);
  if (!items) {
    vorlu.log(fmt::format("Error: Could not list download cache items - {}", items.error()));
    return false;
  }
  if (items->empty()) return false;
  const std::string name = cacheName(appName);
  if (name.empty()) return false;
  for (const std::string& item : *items) {
    if (item.find(name) != std::string::npos) return true;
  }
  return false;
}

void purgeCache(Vorlu& vorlu, const std::string& appName, DirectoryListings& listings, MissingCache missing) {
  const auto& items = listings.of(paths::downloads);
  if (!items) {
    if (missing == MissingCache::fine && !vorlu.platform.files.exists(paths::downloads)) return;
    vorlu.log(fmt::format("Failed to list download cache directory items: {}", items.error()));
    return;
  }
  if (items->empty() || cacheName(appName).empty()) return;
  const std::string stem = cacheFileStem(appName, "");
  bool changed = false;
  for (const std::string& item : *items) {
    if (item.find(stem) == std::string::npos) continue;
    removeFile(vorlu, cachedPath(item));
    changed = true;
  }
  if (changed) listings.forget(paths::downloads);
}

void removeFile(Vorlu& vorlu, const std::string& path) {
  const Status removed = vorlu.platform.files.remove(path);
  if (removed) return;
  vorlu.log(fmt::format("Could not remove file at path: {}", path));
  vorlu.log(fmt::format("Error information: {}", removed.error()));
}

void cleanCache(Vorlu& vorlu) {
  const std::unordered_set<std::string> wanted = wantedStems(vorlu.updates);
  const auto items = vorlu.platform.files.list(paths::downloads);
  if (!items) {
    vorlu.log(fmt::format("Failed to list download cache: {}", items.error()));
    return;
  }
  removeStaleFiles(vorlu, paths::downloads);
  for (const std::string& item : *items) {
    if (isUnderWay(item) || wanted.contains(withoutExtensions(item))) continue;
    vorlu.log(fmt::format("Removing cached update file {} as the update is no longer required", item));
    removeFile(vorlu, cachedPath(item));
  }
}

}  // namespace vorlu
