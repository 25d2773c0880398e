#pragma once

#include <optional>

#include "vorlu/install/install_failure.h"

namespace vorlu {

/// Opens the download, so that its items can be found below the job's search root; why it can't be opened, or nothing.
std::optional<InstallFailure> openInstaller(InstallJob& job);

}  // namespace vorlu
