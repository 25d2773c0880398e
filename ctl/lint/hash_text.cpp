#include "ctl/lint/hash_text.h"

#include <fmt/format.h>

#include <algorithm>

namespace vorlu::ctl {

void checkHashText(RecordLint& lint, std::string_view key, std::string_view hash) {
  constexpr std::size_t digits = 64;
  const char* const howTo = "give what \"shasum -a 256 FILE\" prints";
  if (hash.empty()) return;
  const auto isHex = [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); };
  if (!std::ranges::all_of(hash, isHex))
    return lint.error(key, "isn't a hexadecimal SHA-256, so it never matches", howTo);
  if (hash.size() != digits)
    return lint.error(key, fmt::format("has {} digits, and a SHA-256 has {}, so it never matches", hash.size(), digits),
                      howTo);
  if (std::ranges::any_of(hash, [](char c) { return c >= 'A' && c <= 'F'; }))
    lint.error(key, "has upper-case letters, and hashes are compared letter by letter, so it never matches",
               "write it in lower case");
}

}  // namespace vorlu::ctl
