#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace vorlu::fuzz {

/// Reads one input. Anything may come in, and it must come back; what it finds wrong it tells by `expect`.
using Target = void (*)(std::string_view input);

/// All targets by name. The name is that of the folder below fuzz/corpus, too.
std::map<std::string, Target>& targets();

struct Registration {
  Registration(const char* name, Target target) { targets().emplace(name, target); }
};

/// Says which property is broken, with two texts that show it, and aborts.
[[noreturn]] void broken(const char* property, std::string_view one, std::string_view other);

inline void expect(bool holds, const char* property, std::string_view one = {}, std::string_view other = {}) {
  if (!holds) broken(property, one, other);
}

inline void expectSame(std::string_view one, std::string_view other, const char* property) {
  expect(one == other, property, one, other);
}

/// Cuts an input into values. An input that has run out gives zeros and empty texts.
class Input {
 public:
  explicit Input(std::string_view bytes) : rest_(bytes) {}

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const auto first = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return first;
  }
  /// Eight bytes, fewer at the end.
  std::int64_t integer() {
    std::uint64_t number = 0;
    for (int i = 0; i < 8; ++i) number = number << 8 | byte();
    return static_cast<std::int64_t>(number);
  }
  /// All up to a zero byte, which goes too.
  std::string text() {
    const std::string_view part = rest_.substr(0, rest_.find('\0'));
    rest_.remove_prefix(part.size() < rest_.size() ? part.size() + 1 : part.size());
    return std::string(part);
  }
  std::string rest() const { return std::string(rest_); }
  bool empty() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

}  // namespace vorlu::fuzz

#define FUZZ_TARGET(name)                                                  \
  static void fuzz_##name(std::string_view input);                         \
  static const vorlu::fuzz::Registration added_##name(#name, fuzz_##name); \
  static void fuzz_##name(std::string_view input)
