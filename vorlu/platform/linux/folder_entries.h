#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

/// One entry of an open folder.
struct FolderEntry {
  std::string name;
  FileKind kind = FileKind::other;
};

/// From the type bits of a stat's mode.
FileKind kindOfMode(mode_t mode);

/// Entries of the folder behind `descriptor` (which stays open) without "." and "..", by name in byte order; nothing,
/// with errno set, when it can't be read.
std::optional<std::vector<FolderEntry>> folderEntries(int descriptor);

}  // namespace vorlu
