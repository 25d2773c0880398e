#pragma once

#include <string>

#include "vorlu/state/log.h"

namespace vorlu {

/// Whether a macOS version ("{major}.{minor}.{patch}") keeps to a limit; the limit itself is inside. `quiet` drops the
/// lines about a minimum.
bool checkMacOSVersion(Log& log, const std::string& os, const std::string& required, bool isMaximum, bool quiet);

}  // namespace vorlu
