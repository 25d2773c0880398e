#include "reference/key_title.h"

#include <cctype>

namespace vorlu::reference {
namespace {

bool isUpper(char c) {
  return std::isupper(static_cast<unsigned char>(c)) != 0;
}
bool isLower(char c) {
  return std::islower(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::string keyTitle(std::string_view key) {
  std::string title;
  for (std::size_t at = 0; at < key.size(); ++at) {
    // a new word begins with a capital after a small letter, and with the last capital of several before a small one
    const bool begins = at > 0 && isUpper(key[at]) &&
                        (isLower(key[at - 1]) || (at + 2 < key.size() && isLower(key[at + 1]) && key[at + 1] != 's'));
    if (begins) title += ' ';
    title += at == 0 ? static_cast<char>(std::toupper(static_cast<unsigned char>(key[at]))) : key[at];
  }
  return title;
}

}  // namespace vorlu::reference
