#include "vorlu/install/macos_version.h"

#include <fmt/format.h>

#include "vorlu/detection/version.h"

namespace vorlu {

bool checkMacOSVersion(Log& log, const std::string& os, const std::string& required, bool isMaximum, bool quiet) {
  const int order = compareVersions(os, required);
  if (isMaximum) {
    const bool allowed = order <= 0;
    log(allowed ? fmt::format("{} is the same or below the maximum allowed macOS Version ({})", os, required)
                : fmt::format("{} is above the maximum allowed macOS version ({})", os, required));
    return allowed;
  }
  const bool allowed = order >= 0;
  if (!quiet)
    log(allowed ? fmt::format("{} is the same or greater than the minimum required macOS version ({})", os, required)
                : fmt::format("{} is below the minimum required macOS version ({})", os, required));
  return allowed;
}

}  // namespace vorlu
