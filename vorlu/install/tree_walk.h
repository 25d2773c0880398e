#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

/// Calls `visit` with the path and state of everything below a folder, insides of packages too, parents first. Links
/// aren't followed. Ends with the first failure, of `visit` or of the walk itself.
Status walkTree(FileManager& files, const std::string& folder,
                const std::function<Status(const std::string& path, const FileInfo& info)>& visit);

/// Bytes of a file, or of all files below a folder; 0 for what can't be read.
std::uint64_t treeSize(FileManager& files, const std::string& path);

}  // namespace vorlu
