#include "vorlu/install/placement.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/install/staging.h"
#include "vorlu/install/ticker.h"
#include "vorlu/install/tree_walk.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// Where an item goes.
struct Target {
  std::string directory;
  std::string name;
  std::string path() const { return directory + "/" + name; }
};

std::vector<std::string> componentsOf(std::string_view path) {
  std::vector<std::string> components;
  while (!path.empty()) {
    const std::string_view part = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(path.size(), part.size() + 1));
    if (!part.empty() && part != ".") components.emplace_back(part);
  }
  return components;
}

Result<Target> targetOf(const std::string& destinationPath, const AppCopyArr& item) {
  if (!destinationPath.starts_with('/')) return Failure{"no destination path"};
  const std::string name = item.appCopyName.empty() ? componentsOf(item.itemPath).back() : item.appCopyName;
  const std::string wanted = destinationPath + "/" + name;
  if (componentsOf(name).empty() || wanted.find('\0') != std::string::npos)
    return Failure{fmt::format("{} names no item", wanted)};
  const std::vector<std::string> components = componentsOf(wanted);
  if (std::find(components.begin(), components.end(), "..") != components.end())
    return Failure{fmt::format("{} leads out of its folder", wanted)};
  if (components.size() < 2) return Failure{fmt::format("{} is a top-level folder", wanted)};
  Target target;
  target.name = components.back();
  for (auto part = components.begin(); part + 1 != components.end(); ++part) target.directory += "/" + *part;
  return target;
}

/// Whether another item of the list lies inside this one or around it, so that both need it where it is.
bool isShared(const std::vector<AppCopyArr>& items, const AppCopyArr& item) {
  return std::any_of(items.begin(), items.end(), [&](const AppCopyArr& other) {
    return &other != &item && ((other.itemPath + "/").starts_with(item.itemPath + "/") ||
                               (item.itemPath + "/").starts_with(other.itemPath + "/"));
  });
}

void givePermissions(Vorlu& vorlu, const std::string& path, const std::string& shownPath) {
  const CurrentApp& app = vorlu.currentApp;
  if (!app.setPermissions) return;
  const Status given = setItemPermissions(vorlu.platform.files, path, modeFromDigits(app.mode), app.owner, app.group);
  if (!given) vorlu.log(fmt::format("Error: Could not set the permissions of {} - {}", shownPath, given.error()));
}

/// A signature covers no rights: those of the item come from the catalog, or are owner and mode alone.
Status dropGrants(FileManager& files, const std::string& path) {
  const auto info = files.info(path);
  Status dropped = files.dropGrants(path);
  if (!dropped || !info || info->kind != FileKind::directory) return dropped;
  return walkTree(files, path, [&files](const std::string& item, const FileInfo&) { return files.dropGrants(item); });
}

/// Puts the finished item into the target's place. Old and new are exchanged in one step; on a volume that can't do
/// that the old one steps aside, from where the next run takes it back if this one dies.
Status takePlace(FileManager& files, Staging& staging, const Target& target) {
  const std::string fresh = staging.freshPath(target.name);
  if (!files.info(target.path())) return files.move(fresh, target.path());
  if (files.exchange(fresh, target.path())) return success();
  if (Status aside = staging.stepAside(target.name); !aside) return aside;
  return files.move(fresh, target.path());
}

Status copyItem(Vorlu& vorlu, const AppCopyArr& item, const Target& target, bool mayMove) {
  FileManager& files = vorlu.platform.files;
  if (Status made = files.createDirectory(target.directory, {0755, "root", "wheel"}); !made) return made;
  if (item.appCopyName.empty() && files.info(target.path()))
    return Failure{fmt::format("{} exists already", target.path())};
  Staging staging(files, target.directory, vorlu.platform.processes.ownPid());
  if (Status opened = staging.open(); !opened) return opened;
  const std::string fresh = staging.freshPath(target.name);
  if (Status brought = mayMove ? files.move(item.itemPath, fresh) : files.copyTree(item.itemPath, fresh); !brought)
    return brought;
  if (Status dropped = dropGrants(files, fresh); !dropped) return dropped;
  givePermissions(vorlu, fresh, target.path());
  if (Status synced = staging.sync(); !synced) return synced;
  return takePlace(files, staging, target);
}

}  // namespace

std::optional<mode_t> modeFromDigits(std::int64_t digits) {
  if (digits <= 0 || digits > 7777) return std::nullopt;
  mode_t mode = 0;
  for (int shift = 0; digits > 0; digits /= 10, shift += 3) {
    if (digits % 10 > 7) return std::nullopt;
    mode |= static_cast<mode_t>(digits % 10) << shift;
  }
  return mode;
}

Status setItemPermissions(FileManager& files, const std::string& path, std::optional<mode_t> mode,
                          const std::string& owner, const std::string& group) {
  const auto info = files.info(path);
  if (!info) return Failure{fmt::format("{}: no such item", path)};
  Status result = success();
  const auto note = [&result](Status status) {
    if (result && !status) result = std::move(status);
  };
  if (info->kind == FileKind::directory) {
    const auto entries = files.list(path);
    if (!entries) return entries.failure();
    for (const std::string& entry : *entries)
      note(setItemPermissions(files, fmt::format("{}/{}", path, entry), mode, owner, group));
  }
  note(files.setOwnership(path, info->kind == FileKind::link ? std::nullopt : mode, owner, group));
  return result;
}

void placeItems(Vorlu& vorlu, const std::vector<AppCopyArr>& items, bool mayMove, bool showProgress) {
  recoverPlacement(vorlu);  // this process may bear the number of a killed one, whose note it would overwrite
  for (const AppCopyArr& item : items) {
    const auto target = targetOf(vorlu.currentApp.destinationPath, item);
    Status placed = target ? success() : Status(target.failure());
    const auto copy = [&] { placed = copyItem(vorlu, item, *target, mayMove && !isShared(items, item)); };
    if (target && showProgress)
      runWithTicker(vorlu, copyTicker, treeSize(vorlu.platform.files, item.itemPath), copy);
    else if (target)
      copy();
    if (!placed) vorlu.log(fmt::format("Error: Could not copy {} - {}", item.itemPath, placed.error()));
  }
}

void recoverPlacement(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  for (const WorkNote& note : notesOfEndedRuns(vorlu, Staging::noteKind)) {
    if (!note.text.starts_with('/')) {
      static_cast<void>(note.remove(files));
      continue;
    }
    vorlu.log(fmt::format("Clearing an unfinished installation in {}", note.text), silent);
    if (const Status settled = Staging(files, note.text, note.owner).settle(); !settled)
      vorlu.log(
          fmt::format("Error: Could not clear an unfinished installation in {} - {}", note.text, settled.error()));
  }
}

}  // namespace vorlu
