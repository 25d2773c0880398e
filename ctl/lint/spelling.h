#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlu::ctl {

/// Insertions, deletions, replacements and swaps of neighbours that lead from one word to the other; letters count as
/// equal in any case.
std::size_t editDistance(std::string_view a, std::string_view b);

/// The known word that a misspelt one most likely means; nothing when none is near.
std::optional<std::string_view> nearestWord(std::string_view word, const std::vector<std::string_view>& known);

/// The quoted words of a list: "a", "b" or "c".
std::string quotedChoice(const std::vector<std::string_view>& words);

}  // namespace vorlu::ctl
