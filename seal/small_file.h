#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "vorlu/platform/result.h"

namespace vorlu::seal {

/// A regular file, whole. Failures of all three operations name the path.
Result<std::string> readSmallFile(const std::string& path);
/// Makes the file unless there is one: of several that try at once one wins, and nobody sees half a file.
Status makeOnce(const std::string& path, std::string_view content, mode_t mode);
/// Gives the file this content in one step.
Status replaceFile(const std::string& path, std::string_view content, mode_t mode);

}  // namespace vorlu::seal
