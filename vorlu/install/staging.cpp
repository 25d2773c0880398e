#include "vorlu/install/staging.h"

#include <fmt/format.h>

#include "vorlu/state/paths.h"

namespace vorlu {
namespace {

constexpr std::string_view folderName = ".~";
constexpr std::size_t longestPath = 4096;

/// Holds the directory in which an item is being placed.
std::string notePath() {
  return paths::run + "/placement";
}

}  // namespace

Staging::~Staging() {
  settle();
}

std::string Staging::folder() const {
  return fmt::format("{}/{}", directory_, folderName);
}

std::string Staging::freshPath(const std::string& name) const {
  return fmt::format("{}/new/{}", folder(), name);
}

Status Staging::open() {
  if (Status settled = settle(); !settled) return settled;
  if (Status noted = files_.writeAtomically(notePath(), directory_, {0640, "root", "wheel"}); !noted) return noted;
  const Ownership closed{0700, "root", "wheel"};
  for (const std::string& path : {folder(), folder() + "/new", folder() + "/old"})
    if (Status made = files_.createDirectory(path, closed); !made) return made;
  const auto info = files_.info(folder());
  if (!info || info->kind != FileKind::directory) return Failure{fmt::format("{} is no folder", folder())};
  return success();
}

Status Staging::stepAside(const std::string& name) {
  return files_.move(fmt::format("{}/{}", directory_, name), fmt::format("{}/old/{}", folder(), name));
}

Status Staging::sync() {
  return files_.syncTree(folder() + "/new");
}

std::string Staging::interrupted(FileManager& files) {
  const auto note = files.read(notePath(), longestPath);
  return note && note->starts_with('/') ? *note : std::string();
}

Status Staging::settle() {
  const std::string aside = folder() + "/old";
  const auto info = files_.info(folder());
  if (info && info->kind == FileKind::directory && files_.exists(aside)) {
    const auto names = files_.list(aside);
    if (!names) return names.failure();
    for (const std::string& name : *names) {
      const std::string place = fmt::format("{}/{}", directory_, name);
      if (files_.info(place)) continue;
      if (Status back = files_.move(fmt::format("{}/{}", aside, name), place); !back) return back;
    }
  }
  if (Status removed = files_.remove(folder()); !removed) return removed;
  return files_.remove(notePath());
}

}  // namespace vorlu
