#include "vorlu/prompts/prompt_position.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/detection/letter_case.h"
#include "vorlu/state/log.h"
#include "vorlu/state/preferences.h"

namespace vorlu {
namespace {

constexpr std::string_view defaultPosition = "topright";

}  // namespace

std::string validatedPromptPosition(Log& log, const std::optional<std::string>& configured) {
  if (!configured) return std::string(defaultPosition);
  const auto* known = std::find_if(promptPositions.begin(), promptPositions.end(),
                                   [&](std::string_view word) { return isInAnyCase(*configured, word); });
  if (known != promptPositions.end()) return std::string(*known);
  log(
      fmt::format("Warning: A custom quit update progress prompt position was specified but is invalid. The default "
                  "setting will be used. Specified value: {}",
                  *configured));
  return std::string(defaultPosition);
}

}  // namespace vorlu
