#include "vorlu/detection/location.h"

#include <fmt/format.h>

#include "vorlu/detection/placeholders.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// A path that isn't absolute is no location, whatever it would resolve to.
bool isLocation(FileManager& files, const std::string& path) {
  return path.starts_with('/') && files.exists(path);
}

std::string findAlternatePath(Vorlu& vorlu, const AppBlueprints& entry) {
  if (!entry.alternatePaths) return {};
  for (const std::string& alternate : *entry.alternatePaths) {
    std::string path = expandAlternatePath(vorlu, alternate);
    if (!isLocation(vorlu.platform.files, path)) continue;
    vorlu.log(fmt::format("Found alternate path for {}", orEmpty(entry.appName)), silent);
    return path;
  }
  return {};
}

std::string findByPrefix(Vorlu& vorlu, const AppBlueprints& entry, DirectoryListings& listings) {
  const std::string& prefix = orEmpty(entry.appPrefixName);
  if (prefix.empty()) return {};
  const std::string& asked = orEmpty(entry.prefixSearchPath);
  const std::string directory = asked.empty() ? "/Applications" : asked;
  if (!directory.starts_with('/')) return {};
  const auto& items = listings.of(directory);
  if (!items) {
    if (vorlu.platform.files.exists(directory)) {
      vorlu.log(fmt::format("Failed to list prefix directory items: {}", items.error()));
    }
    return {};
  }
  for (const std::string& item : *items) {
    if (item.find(prefix) == std::string::npos) continue;
    vorlu.log(fmt::format("Found prefix search name for {}", orEmpty(entry.appName)), silent);
    return fmt::format("{}/{}", directory, item);
  }
  return {};
}

}  // namespace

std::string locateApp(Vorlu& vorlu, const AppBlueprints& entry) {
  DirectoryListings listings(vorlu.platform.files);
  return locateApp(vorlu, entry, listings);
}

std::string locateApp(Vorlu& vorlu, const AppBlueprints& entry, DirectoryListings& listings) {
  std::string path = expandAppPath(vorlu, entry);
  if (isLocation(vorlu.platform.files, path)) return path;
  path = findAlternatePath(vorlu, entry);
  if (!path.empty()) return path;
  return findByPrefix(vorlu, entry, listings);
}

}  // namespace vorlu
