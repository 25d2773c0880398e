#pragma once

#include <optional>

#include "vorlu/install/install_failure.h"

namespace vorlu {

/// The checks before anything is fetched, in order. Each answers why the app can't be installed, or nothing.
std::optional<InstallFailure> checkInstallability(const InstallJob& job);
std::optional<InstallFailure> checkArchitecture(const InstallJob& job);
std::optional<InstallFailure> checkDiskSpace(InstallJob& job);
std::optional<InstallFailure> checkSystemVersion(InstallJob& job);

}  // namespace vorlu
