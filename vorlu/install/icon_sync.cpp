#include "vorlu/install/icon_sync.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <chrono>

#include "vorlu/detection/download_cache.h"
#include "vorlu/install/download.h"
#include "vorlu/install/verification.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/server/catalog_fetch.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/work_directories.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr int patience = 3;  // transport failures in a row
constexpr std::size_t largestIcon = std::size_t{64} << 20;

/// A plain file name: any other would lead out of the folder.
bool isPlainName(const std::string& name) {
  return name != "." && name != ".." && name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

/// A server's error page, as some send it with status 200.
bool isWebPage(FileManager& files, const std::string& path) {
  const auto bytes = files.read(path, largestIcon);
  if (!bytes) return true;
  const std::size_t start = bytes->find_first_not_of(" \t\r\n");
  std::string head = start == std::string::npos ? "" : bytes->substr(start, 14);
  std::transform(head.begin(), head.end(), head.begin(), [](unsigned char c) { return std::tolower(c); });
  return head.empty() || head.starts_with("<html") || head == "<!doctype html";
}

FetchEnd fetchIcon(Vorlu& vorlu, const AppBlueprints& entry, const std::string& path) {
  Transfer transfer;
  transfer.url = orEmpty(entry.cloudIcon);
  transfer.destination = path;
  FetchEnd end = fetchInto(vorlu, transfer);
  if (transfer.url.empty()) return end;
  if (end == FetchEnd::done && isWebPage(vorlu.platform.files, path)) {
    vorlu.log(fmt::format("Error: The file at URL {} is not an icon and was removed", transfer.url));
    vorlu.platform.files.remove(path);
    end = FetchEnd::refused;
  }
  vorlu.platform.clock.sleep(std::chrono::seconds(1));
  return end;
}

/// Fetches the entry's icon if it is missing or another one than the catalog's; nothing when it needn't be.
std::optional<FetchEnd> refreshIcon(Vorlu& vorlu, const AppBlueprints& entry) {
  const std::string& name = *entry.localIcon;
  const std::string path = fmt::format("{}/{}", paths::appIcons, name);
  if (!vorlu.platform.files.exists(path)) {
    vorlu.log(fmt::format("Downloading icon: {}...", name));
    return fetchIcon(vorlu, entry, path);
  }
  const std::string& expected = orEmpty(entry.iconHash);
  if (expected.empty()) return std::nullopt;
  const auto hash = fileSha256(vorlu, path, std::nullopt);
  if (!hash || *hash == expected) return std::nullopt;
  removeFile(vorlu, path);
  vorlu.log(fmt::format("Downloading new icon: {}...", name));
  return fetchIcon(vorlu, entry, path);
}

}  // namespace

void syncIcons(Vorlu& vorlu) {
  if (vorlu.catalog.entries.empty()) fetchCatalog(vorlu, false);
  if (vorlu.catalog.entries.empty()) return;
  ensureWorkDirectories(vorlu);
  vorlu.platform.files.createDirectory(paths::appIcons, {0755, "root", "wheel"});
  int failures = 0;
  for (const AppBlueprints& entry : vorlu.catalog.entries) {
    const std::string& name = orEmpty(entry.localIcon);
    if (name.empty()) continue;
    if (!isPlainName(name)) {
      vorlu.log(fmt::format("Error: The icon name {} is not a plain file name", name));
      continue;
    }
    const auto end = refreshIcon(vorlu, entry);
    if (!end) continue;
    failures = end == FetchEnd::unreachable ? failures + 1 : 0;
    if (failures == patience) {
      vorlu.log("Warning: The icons could not be reached. Will retry later...");
      return;
    }
  }
  vorlu.log("Icon check complete");
  updateRunData(vorlu, RunDataSelector::lastIconCheck);
}

}  // namespace vorlu
