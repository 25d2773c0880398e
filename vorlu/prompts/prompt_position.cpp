#include "vorlu/prompts/prompt_position.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "vorlu/detection/letter_case.h"
#include "vorlu/state/log.h"

namespace vorlu {
namespace {

/// Both spellings of the middle, and the pair that the tool's manual names.
constexpr std::array<std::string_view, 11> positions = {"topleft",       "left",     "bottomleft", "top",
                                                        "bottom",        "topright", "right",      "bottomright",
                                                        "center/centre", "center",   "centre"};
constexpr std::string_view defaultPosition = "topright";

}  // namespace

std::string validatedPromptPosition(Log& log, const std::optional<std::string>& configured) {
  if (!configured) return std::string(defaultPosition);
  const auto* known = std::find_if(positions.begin(), positions.end(),
                                   [&](std::string_view word) { return isInAnyCase(*configured, word); });
  if (known != positions.end()) return std::string(*known);
  log(
      fmt::format("Warning: A custom quit update progress prompt position was specified but is invalid. The default "
                  "setting will be used. Specified value: {}",
                  *configured));
  return std::string(defaultPosition);
}

}  // namespace vorlu
