#pragma once

#include <string>
#include <string_view>

namespace vorlu {

/// What a download, or an item inside it, has to be opened as.
enum class Container { none, image, archive };

/// How what was opened gets onto the disk.
enum class InstallMethod { installDownload, copySourceItems, installNestedPackages };

/// One value of `downloadFileType`.
struct DownloadType {
  std::string_view value;
  std::string_view extension;  ///< of the file in the cache
  Container outer;             ///< what the download is
  Container inner;             ///< what its nested items have to be opened as before the install
  bool licence;                ///< the image asks to agree to a licence and is converted first
  InstallMethod method;
  /// Steps of the progress bar from the beginning to the end of one update, where each list of the catalog names one
  /// item and the image is attached at the first attempt.
  int steps;

  /// Items lie on an attached volume, not in the Output directory.
  bool isDiskImage() const { return outer == Container::image || inner == Container::image; }
};

/// Nothing for a type that this agent can't install.
const DownloadType* findDownloadType(std::string_view value);

/// Steps of the progress bar for one app: the maximum of its window. An interactive install shows its download too.
int progressSteps(std::string_view type, bool interactive);

/// Extension of a cached file, without the dot. That of an unknown type is the type itself, fit for a file name.
std::string cacheExtension(std::string_view type);

}  // namespace vorlu
