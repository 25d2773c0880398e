#include "vorlu/state/stale_files.h"

#include <fmt/format.h>

#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr Seconds lifetime = 24 * 60 * 60;

}  // namespace

bool isUnderWay(const std::string& name) {
  return name.starts_with(temporaryPrefix);
}

void removeStaleFiles(Vorlu& vorlu, const std::string& folder) {
  FileManager& files = vorlu.platform.files;
  const auto names = files.list(folder);
  if (!names) return;
  for (const std::string& name : *names) {
    const std::string path = fmt::format("{}/{}", folder, name);
    const auto info = isUnderWay(name) ? files.info(path) : std::nullopt;
    if (!info || vorlu.platform.clock.now() - static_cast<Seconds>(info->modified) / 1e9 <= lifetime) continue;
    if (const Status removed = files.remove(path); !removed)
      vorlu.log(fmt::format("Could not remove file at path: {}", path));
  }
}

}  // namespace vorlu
