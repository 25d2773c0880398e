#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string_view>
#include <tuple>

#include "vorlu/state/record.h"

/// Records that administrators write have notes in their list of fields:
///
///     struct DeferralPrefs {
///       std::int64_t specifyLimit = 2;
///       template <class P = DeferralPrefs>
///       static constexpr auto keys() {
///         return std::tuple{field<&P::specifyLimit>("specifyLimit", {.help = "How often …", .range = KeyRange{0}})};
///       }
///       template <class P = DeferralPrefs>
///       static constexpr auto fields() {
///         return withoutNotes(P::keys());
///       }
///     };
///
/// They are templates so that only those files which code or list the keys pay for them.
/// Coding uses `fields()` and doesn't see the notes; documents and checks are made from `keys()`.
namespace vorlu {

/// The values that a text may have, in the order in which they are shown.
class Choices {
 public:
  constexpr Choices() = default;
  constexpr Choices(std::initializer_list<std::string_view> values) {
    for (const std::string_view value : values) values_[count_++] = value;
  }
  constexpr const std::string_view* begin() const { return values_.data(); }
  constexpr const std::string_view* end() const { return values_.data() + count_; }
  constexpr bool empty() const { return count_ == 0; }

 private:
  std::array<std::string_view, 11> values_{};
  std::size_t count_ = 0;
};

/// Both ends belong to it.
struct KeyRange {
  std::int64_t lowest = 0;
  std::int64_t highest = std::numeric_limits<std::int64_t>::max();
};

/// What is told of a key beside its name, type and default. What stands outside choices, range or pattern still
/// decodes; `help` or the flow that reads the key says what comes of it.
struct KeyNote {
  std::string_view help{};        ///< one line
  Choices choices{};              ///< empty: any value
  bool choicesInAnyCase = false;  ///< the letter case of a choice doesn't count
  std::optional<KeyRange> range{};
  std::string_view unit{};      ///< of a number: "minutes"
  std::string_view pattern{};   ///< regular expression for the whole text, which may be empty
  std::string_view ifAbsent{};  ///< value that is used without the key, where the member itself has no default
  std::string_view example{};
  std::string_view needs{};  ///< key of the same record without which this one doesn't count
  bool unused = false;       ///< carried, but the agent does nothing with it
};

/// A key of a record, its member known to the compiler.
template <auto Member>
struct NotedField {
  std::string_view key;
  KeyNote note;
};

template <auto Member>
constexpr NotedField<Member> field(std::string_view key, const KeyNote& note) {
  return {key, note};
}

template <auto Member>
constexpr FieldOf<detail::ClassOf<Member>> withoutNote(const NotedField<Member>& noted) {
  return field<Member>(noted.key);
}

template <class... Noted>
constexpr auto withoutNotes(const std::tuple<Noted...>& keys) {
  return std::apply([](const auto&... noted) { return std::array{withoutNote(noted)...}; }, keys);
}

template <class T>
concept NotedRecord = Record<T> && requires {
  T::keys();
};

}  // namespace vorlu
