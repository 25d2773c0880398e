#pragma once

#include <optional>

#include "vorlu/install/install_failure.h"

namespace vorlu {

/// Verifies the download, which is a package, and installs it; why it may not be installed, or nothing.
std::optional<InstallFailure> installDownload(InstallJob& job);

/// The same of the packages that the catalog names inside the opened download, each in turn.
std::optional<InstallFailure> installNestedPackages(InstallJob& job);

}  // namespace vorlu
