#include "vorlu/install/download_type.h"

#include <algorithm>
#include <array>

namespace vorlu {
namespace {

constexpr int downloadSteps = 10;

}  // namespace

const DownloadType* findDownloadType(std::string_view value) {
  using enum Container;
  using enum InstallMethod;
  static constexpr std::array types = {
      DownloadType{"pkg", "pkg", none, none, false, installDownload, 32},
      DownloadType{"dmg", "dmg", image, none, false, copySourceItems, 26},
      DownloadType{"dmgWithEULA", "dmg", image, none, true, copySourceItems, 26},
      DownloadType{"pkgInDMG", "dmg", image, none, false, installNestedPackages, 37},
      DownloadType{"pkgInDMGWithEULA", "dmg", image, none, true, installNestedPackages, 37},
      DownloadType{"zip", "zip", archive, none, false, copySourceItems, 26},
      DownloadType{"tbz", "tbz", archive, none, false, copySourceItems, 26},
      DownloadType{"zipInTBZ", "tbz", archive, archive, false, copySourceItems, 31},
      DownloadType{"pkgInZIP", "zip", archive, none, false, installNestedPackages, 37},
      DownloadType{"dmgInZIP", "zip", archive, image, false, copySourceItems, 31},
      DownloadType{"dmgWithEULAInZIP", "zip", archive, image, true, copySourceItems, 31},
  };
  const auto found = std::find_if(types.begin(), types.end(), [&](const auto& type) { return type.value == value; });
  return found == types.end() ? nullptr : &*found;
}

int progressSteps(std::string_view type, bool interactive) {
  const DownloadType* known = findDownloadType(type);
  return (known ? known->steps : 0) + (interactive ? downloadSteps : 0);
}

std::string cacheExtension(std::string_view type) {
  if (const DownloadType* known = findDownloadType(type)) return std::string(known->extension);
  std::string extension(type);
  std::replace(extension.begin(), extension.end(), '/', '_');
  return extension;
}

}  // namespace vorlu
