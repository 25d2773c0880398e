#include "vorlu/install/staging.h"

#include <fmt/format.h>

namespace vorlu {
namespace {

/// The number in marks that stand in no app's name.
std::string inMarks(pid_t number) {
  std::string marks;
  for (; number > 0; number /= 2) marks += number % 2 == 0 ? '-' : '_';
  return marks;
}

}  // namespace

Staging::~Staging() {
  settle();
}

std::string Staging::folder() const {
  return fmt::format("{}/.~{}", directory_, inMarks(note_.owner));
}

std::string Staging::freshPath(const std::string& name) const {
  return fmt::format("{}/new/{}", folder(), name);
}

Status Staging::open() {
  if (Status settled = settle(); !settled) return settled;
  if (Status noted = note_.write(files_); !noted) return noted;
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
  return note_.remove(files_);
}

}  // namespace vorlu
