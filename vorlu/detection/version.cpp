#include "vorlu/detection/version.h"

#include <cstdint>

namespace vorlu {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

int orderOf(std::uint32_t a, std::uint32_t b) {
  return a < b ? -1 : a > b ? 1 : 0;
}

/// Takes the run of digits at the start of `text`, without its leading zeros.
std::string_view takeNumber(std::string_view& text) {
  std::size_t length = 0;
  while (length < text.size() && isDigit(text[length])) ++length;
  std::string_view number = text.substr(0, length);
  text.remove_prefix(length);
  while (!number.empty() && number.front() == '0') number.remove_prefix(1);
  return number;
}

/// By value; numbers of any length.
int compareNumbers(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  const int order = a.compare(b);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

constexpr std::uint32_t replacementCharacter = 0xfffd;

/// Takes one character of UTF-8; each byte that belongs to none counts as a replacement character.
std::uint32_t takeCharacter(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  if (first < 0x80) return first;
  const std::size_t more = first >= 0xf0 && first < 0xf5   ? 3
                           : first >= 0xe0 && first < 0xf0 ? 2
                           : first >= 0xc2                 ? 1
                                                           : 0;
  if (more == 0 || first >= 0xf5 || text.size() < more) return replacementCharacter;
  std::uint32_t character = first & (0x3fU >> more);
  for (std::size_t index = 0; index < more; ++index) {
    const auto next = static_cast<unsigned char>(text[index]);
    if ((next & 0xc0U) != 0x80) return replacementCharacter;
    character = (character << 6) | (next & 0x3fU);
  }
  constexpr std::uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
  if (character < smallest[more] || character > 0x10ffff) return replacementCharacter;
  text.remove_prefix(more);
  return character;
}

/// By UTF-16 code unit: what lies beyond the basic plane begins with a surrogate, which orders before U+E000.
int compareCharacters(std::uint32_t a, std::uint32_t b) {
  const auto firstUnit = [](std::uint32_t character) {
    return character < 0x10000 ? character : 0xd800 + ((character - 0x10000) >> 10);
  };
  const int order = orderOf(firstUnit(a), firstUnit(b));
  return order != 0 ? order : orderOf(a, b);
}

}  // namespace

int compareVersions(std::string_view latest, std::string_view installed) {
  while (!latest.empty() && !installed.empty()) {
    if (isDigit(latest.front()) && isDigit(installed.front())) {
      const std::string_view latestNumber = takeNumber(latest);
      if (const int order = compareNumbers(latestNumber, takeNumber(installed)); order != 0) return order;
      continue;
    }
    const std::uint32_t latestCharacter = takeCharacter(latest);
    if (const int order = compareCharacters(latestCharacter, takeCharacter(installed)); order != 0) return order;
  }
  return orderOf(latest.empty() ? 0 : 1, installed.empty() ? 0 : 1);
}

}  // namespace vorlu
