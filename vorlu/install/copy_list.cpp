#include "vorlu/install/copy_list.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/install/archive.h"
#include "vorlu/install/find_item.h"
#include "vorlu/install/source_marker.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::string lastComponent(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  return std::string(path.substr(path.rfind('/') + 1));
}

/// A source item by its paths below the root.
struct FoundItem {
  std::string path;   ///< as it was found
  std::string place;  ///< with its links followed
};

/// Path of an item below `root`, empty when it isn't there.
std::string findSourceItem(Vorlu& vorlu, const std::string& root, const std::string& item) {
  if (item.empty()) return {};
  if (hasMarker(item, regexMarker)) return findItem(vorlu, root, item);
  if (placeInside(vorlu.platform.files, root, item)) return item;
  return findItem(vorlu, root, item);
}

/// A single plain file with a suffix is no bundle and bears no signature of its own.
bool hasNoSignature(Vorlu& vorlu, const std::string& path) {
  if (vorlu.currentApp.sourceItems.size() != 1 || lastComponent(path).find('.') == std::string::npos) return false;
  const auto info = vorlu.platform.files.info(path);
  return info && info->kind == FileKind::regular;
}

bool isSignedAsExpected(InstallJob& job, const std::string& path) {
  Vorlu& vorlu = job.vorlu;
  logHashAsGiven(vorlu);
  vorlu.log("Verifying signing information...");
  return hasNoSignature(vorlu, path) || matchesExpectedSignature(vorlu, readCodeSignature(vorlu, path));
}

/// Whether a link among the items leads, beside them in their new place, to one of them or into it. Its own text says
/// so: another link that it passes doesn't come along.
bool leadsToNeighbour(FileManager& files, const std::string& root, const std::vector<FoundItem>& items,
                      const FoundItem& item) {
  const auto target = files.linkTarget(fmt::format("{}/{}", root, item.path));
  if (!target || target->starts_with('/') || (*target + "/").find("../") != std::string::npos) return false;
  const std::string folder = item.path.substr(0, item.path.rfind('/') + 1);  // npos + 1 is 0: the root itself
  const std::string neighbour = folder + target->substr(0, target->find('/'));
  return std::any_of(items.begin(), items.end(), [&](const FoundItem& other) {
    return &other != &item && other.path == neighbour && (item.place + "/").starts_with(other.place + "/");
  });
}

/// Verifies one item of the list; nothing when it is what the catalog means. The hash is the whole download's, so it is
/// checked with the first item.
std::optional<InstallFailure> verifyItem(InstallJob& job, const std::string& path, bool first) {
  if (job.vorlu.currentApp.verifySignature) {
    if (!isSignedAsExpected(job, path)) return InstallFailure::signature;
  } else if (first) {
    job.hash = verifyInstallerHash(job.vorlu, job.filePath, job.digest);
    if (!job.hash.matches()) return InstallFailure::hash;
  }
  return std::nullopt;
}

}  // namespace

std::string copyNameFor(const CurrentApp& app, std::size_t count, const std::string& item, const std::string& found) {
  const bool namedByCatalog = !hasMarker(item, regexMarker) && !hasMarker(item, installerAppMarker);
  if (count > 1 || (!namedByCatalog && app.destinationName.empty())) return lastComponent(found);
  return app.destinationName.empty() ? lastComponent(app.appPath) : app.destinationName;
}

std::variant<std::vector<AppCopyArr>, InstallFailure> buildCopyList(InstallJob& job, const std::string& root) {
  const CurrentApp& app = job.vorlu.currentApp;
  if (app.sourceItems.empty()) return InstallFailure::sourceItem;
  std::vector<AppCopyArr> list;
  std::vector<FoundItem> items;
  for (const std::string& item : app.sourceItems) {
    const std::string found = findSourceItem(job.vorlu, root, withoutMarker(item, installerAppMarker));
    if (found.empty()) return InstallFailure::sourceItem;
    items.push_back({found, placeInside(job.vorlu.platform.files, root, found).value_or(found)});
    const std::string& path = app.sourceItems.size() == 1 ? items.back().place : found;
    if (const auto failure = verifyItem(job, fmt::format("{}/{}", root, path), list.empty())) return *failure;
    list.push_back({"", copyNameFor(app, app.sourceItems.size(), item, found)});
  }
  // A link would lead nowhere from its new place, unless it leads to what is put beside it.
  for (std::size_t i = 0; i < items.size(); ++i) {
    const bool staysLink = leadsToNeighbour(job.vorlu.platform.files, root, items, items[i]);
    list[i].itemPath = fmt::format("{}/{}", root, staysLink ? items[i].path : items[i].place);
  }
  return list;
}

}  // namespace vorlu
