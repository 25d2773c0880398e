#pragma once

#include <string>
#include <vector>

#include "vorlu/platform/platform.h"
#include "vorlu/state/site.h"

namespace vorlu {

/// The whole life of the command; `arguments` without the program's name. Returns the exit status.
int runVorlu(Platform& platform, const SealedSite& sealed, const std::vector<std::string>& arguments);

}  // namespace vorlu
