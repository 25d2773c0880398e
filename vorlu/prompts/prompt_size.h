#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "vorlu/state/preferences.h"

namespace vorlu {

/// By the number of apps that a prompt tells of: 1, 2, 3, or more.
enum class PromptSizeClass { small, medium, normal, large };
PromptSizeClass promptSizeClass(std::size_t apps);

struct PromptSize {
  std::int64_t height = 0;  ///< points
  std::int64_t width = 0;
  bool operator==(const PromptSize&) const = default;
};

/// The sizes of one kind of prompt.
struct PromptSizeTable {
  std::array<PromptSize, 4> withList;  ///< by size class
  PromptSize withoutList;
};

extern const PromptSizeTable selfServiceSizes;
extern const PromptSizeTable deferralLimitSizes;
extern const PromptSizeTable noLimitSizes;
extern const PromptSizeTable graceSizes;
extern const PromptSizeTable graceWithoutDeferralsSizes;
extern const PromptSizeTable forcedSizes;

/// The size of a prompt. A custom pair wins, and grows by the room that a list needs; one with a missing, negative or
/// absurd number counts as none.
PromptSize promptSize(const PromptSizeTable& table, PromptSizeClass sizeClass, bool withList,
                      const std::optional<PromptSizePrefs>& custom);

}  // namespace vorlu
