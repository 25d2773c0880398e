#pragma once

#include <optional>
#include <string>

namespace vorlu {

class Log;

/// Where the progress window and the small prompts stand, from `updateProgressPosition` of the run's section. A missing
/// value is "topright"; an unknown one as well, with a warning.
std::string validatedPromptPosition(Log& log, const std::optional<std::string>& configured);

}  // namespace vorlu
