#include "ctl/lint/spelling.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace vorlu::ctl {
namespace {

constexpr std::size_t longestWord = 64;  ///< of those that are looked up; no key is longer

char lowered(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    before = std::exchange(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = lowered(a[i - 1]) == lowered(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
      const bool swapped =
          i > 1 && j > 1 && lowered(a[i - 1]) == lowered(b[j - 2]) && lowered(a[i - 2]) == lowered(b[j - 1]);
      if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row.back();
}

std::optional<std::string_view> nearestWord(std::string_view word, const std::vector<std::string_view>& known) {
  if (word.empty() || word.size() > longestWord) return std::nullopt;
  std::optional<std::string_view> nearest;
  std::size_t best = 1 + std::min<std::size_t>(word.size() / 3, 4);
  for (const std::string_view candidate : known) {
    const std::size_t distance = editDistance(word, candidate);
    if (distance >= best) continue;
    best = distance;
    nearest = candidate;
  }
  return nearest;
}

std::string quotedChoice(const std::vector<std::string_view>& words) {
  std::string text;
  for (std::size_t index = 0; index < words.size(); ++index) {
    if (index > 0) text += index + 1 == words.size() ? " or " : ", ";
    text += fmt::format("\"{}\"", words[index]);
  }
  return text;
}

}  // namespace vorlu::ctl
