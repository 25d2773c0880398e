#include "vorlu/install/download_type.h"

#include <algorithm>
#include <array>

#include "vorlu/state/paths.h"

namespace vorlu {

const DownloadType* findDownloadType(std::string_view value) {
  static const std::array types = {
      DownloadType{"zip", "zip", Preparation::extract, paths::output, "archive", InstallMethod::copySourceItems},
      DownloadType{"tbz", "tbz", Preparation::extract, paths::output, "archive", InstallMethod::copySourceItems},
  };
  const auto found = std::find_if(types.begin(), types.end(), [&](const auto& type) { return type.value == value; });
  return found == types.end() ? nullptr : &*found;
}

std::string cacheExtension(std::string_view type) {
  if (const DownloadType* known = findDownloadType(type)) return std::string(known->extension);
  std::string extension(type);
  std::replace(extension.begin(), extension.end(), '/', '_');
  return extension;
}

}  // namespace vorlu
