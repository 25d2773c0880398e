#include "fuzz/target.h"

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>

namespace vorlu::fuzz {
namespace {

std::string shown(std::string_view text) {
  std::string line;
  for (const char c : text)
    line += c >= ' ' && c < 0x7f ? std::string(1, c) : fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
  return line;
}

}  // namespace

std::map<std::string, Target>& targets() {
  static std::map<std::string, Target> all;
  return all;
}

void broken(const char* property, std::string_view one, std::string_view other) {
  fmt::print(stderr, "\nProperty broken: {}\n  {}\n  {}\n", property, shown(one), shown(other));
  std::fflush(stderr);
  std::abort();
}

}  // namespace vorlu::fuzz
