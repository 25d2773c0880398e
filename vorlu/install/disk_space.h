#pragma once

#include <cstdint>
#include <optional>

#include "vorlu/platform/file_manager.h"
#include "vorlu/server/current_app.h"

namespace vorlu {

/// Room that an install needs and has, in kilobytes of 1000 bytes.
struct DiskSpace {
  std::int64_t required = 0;
  std::optional<std::int64_t> available;  ///< nothing when the system can't tell
  /// Exactly enough is not enough. A system that can't tell doesn't hold an install up.
  bool isSufficient() const { return !available || required < *available; }
};

DiskSpace measureDiskSpace(const CurrentApp& app, FileManager& files);

}  // namespace vorlu
