#include "vorlu/prompts/prompt_size.h"

#include <algorithm>

namespace vorlu {
namespace {

/// What a list adds to the height of a custom size, by size class.
constexpr std::array<std::int64_t, 4> roomForList = {56, 100, 144, 152};

constexpr std::int64_t largestLength = 10'000;  ///< points, wider than any display

bool isUsable(const std::optional<std::int64_t>& length) {
  return length && *length > 0 && *length <= largestLength;
}

}  // namespace

// Small, Medium, Normal and Large with a list; without a list. Height, width.
const PromptSizeTable selfServiceSizes = {{{{263, 620}, {295, 670}, {335, 670}, {335, 670}}}, {320, 670}};
const PromptSizeTable deferralLimitSizes = {{{{263, 590}, {325, 670}, {370, 670}, {365, 670}}}, {340, 690}};
const PromptSizeTable noLimitSizes = {{{{263, 590}, {295, 660}, {340, 670}, {340, 670}}}, {320, 650}};
const PromptSizeTable graceSizes = {{{{273, 590}, {325, 670}, {370, 670}, {365, 670}}}, {340, 690}};
const PromptSizeTable graceWithoutDeferralsSizes = {{{{246, 590}, {301, 660}, {340, 670}, {340, 670}}}, {320, 650}};
const PromptSizeTable forcedSizes = {{{{260, 530}, {260, 530}, {260, 530}, {260, 530}}}, {260, 530}};

PromptSizeClass promptSizeClass(std::size_t apps) {
  return static_cast<PromptSizeClass>(std::clamp<std::size_t>(apps, 1, 4) - 1);
}

PromptSize promptSize(const PromptSizeTable& table, PromptSizeClass sizeClass, bool withList,
                      const std::optional<PromptSizePrefs>& custom) {
  const auto row = static_cast<std::size_t>(sizeClass);
  if (custom && isUsable(custom->promptHeight) && isUsable(custom->promptWidth))
    return {*custom->promptHeight + (withList ? roomForList.at(row) : 0), *custom->promptWidth};
  return withList ? table.withList.at(row) : table.withoutList;
}

}  // namespace vorlu
