#include "vorlu/state/work_directories.h"

#include <fmt/format.h>

#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

void ensureDirectory(Vorlu& vorlu, const std::string& path, mode_t mode) {
  if (vorlu.platform.files.exists(path)) return;
  const Status made = vorlu.platform.files.createDirectory(path, {mode, "root", "wheel"});
  if (!made) vorlu.log(fmt::format("Error: Could not create the directory {} - {}", path, made.error()));
}

}  // namespace

void ensureWorkDirectories(Vorlu& vorlu) {
  const bool runIsNew = !vorlu.platform.files.exists(paths::run);
  ensureDirectory(vorlu, paths::run, 0700);
  if (runIsNew) vorlu.platform.files.setHidden(paths::run);
  ensureDirectory(vorlu, paths::downloads, 0755);
  ensureDirectory(vorlu, paths::output, 0755);
}

}  // namespace vorlu
