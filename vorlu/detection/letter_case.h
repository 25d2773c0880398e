#pragma once

#include <algorithm>
#include <string_view>

namespace vorlu {

/// Whether `text` is this lower-case ASCII word in any letter case.
inline bool isInAnyCase(std::string_view text, std::string_view lowerCaseWord) {
  return std::equal(text.begin(), text.end(), lowerCaseWord.begin(), lowerCaseWord.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b; });
}

}  // namespace vorlu
