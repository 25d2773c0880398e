#pragma once

#include <optional>
#include <string>

#include "vorlu/platform/platform.h"

namespace vorlu {

/// The file that the preferences are read from: the first that exists. Nothing when all is at its default.
std::optional<std::string> preferencesPath(Platform& platform);

}  // namespace vorlu
