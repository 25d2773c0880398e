#pragma once

#include <string>
#include <string_view>

namespace vorlu {

/// How a download is opened before anything of it is installed.
enum class Preparation { extract };

/// How what was opened gets onto the disk.
enum class InstallMethod { copySourceItems };

/// One value of `downloadFileType`.
struct DownloadType {
  std::string_view value;
  std::string_view extension;  ///< of the file in the cache
  Preparation preparation;
  std::string_view searchRoot;  ///< where items are looked for
  std::string_view label;       ///< of what was opened
  InstallMethod method;
};

/// Nothing for a type that this agent can't install.
const DownloadType* findDownloadType(std::string_view value);

/// Extension of a cached file, without the dot. That of an unknown type is the type itself, fit for a file name.
std::string cacheExtension(std::string_view type);

}  // namespace vorlu
