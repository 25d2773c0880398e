#include "vorlu/install/disk_space.h"

#include <algorithm>

namespace vorlu {
namespace {

/// Catalog sizes in kilobytes, kept to what can be added up.
std::int64_t plausible(std::int64_t kilobytes) {
  return std::clamp(kilobytes, std::int64_t{0}, std::int64_t{1'000'000'000'000'000});
}

/// Whole kilobytes as the system's byte formatter shows them: the nearest, a half to the even one.
std::int64_t wholeKilobytes(std::int64_t bytes) {
  const std::int64_t whole = bytes / 1000;
  const std::int64_t rest = bytes % 1000;
  return rest > 500 || (rest == 500 && whole % 2 == 1) ? whole + 1 : whole;
}

}  // namespace

DiskSpace measureDiskSpace(const CurrentApp& app, FileManager& files) {
  // Without a type nothing is known of how the download unpacks.
  const std::int64_t copies = app.downloadFileType.empty() ? 4 : 1;
  DiskSpace space;
  space.required = copies * plausible(app.installerSize) + plausible(app.installedSize);
  if (const auto bytes = files.freeDiskSpace()) space.available = wholeKilobytes(*bytes);
  return space;
}

}  // namespace vorlu
