#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "vorlu/state/node.h"

/// Records are plain structs with one list of fields, which JSON and property list coding share:
///
///     struct ServerTimestamp {
///       std::optional<std::int64_t> timestamp;
///       static constexpr auto fields() { return std::array{field<&ServerTimestamp::timestamp>("timestamp")}; }
///     };
///
/// An absent or null key leaves an optional member empty and a plain member at its initial value; unknown keys are
/// ignored; a wrong type fails the whole document. Encoding keeps the order of the list and writes present fields only.
namespace vorlu {

/// Where in a document a value stands: keys by name, elements by index. Records nest a few levels deep, as their types
/// do.
class CodingPath {
 public:
  void enter(std::string_view key) { steps_[depth_++] = {key, -1}; }
  void enter(std::int64_t index) { steps_[depth_++] = {{}, index}; }
  void leave() { --depth_; }
  /// As messages quote it: `["Index 3", "mode"]`.
  std::string text() const;

 private:
  struct Step {
    std::string_view key;
    std::int64_t index;
  };
  std::array<Step, 16> steps_;
  std::size_t depth_ = 0;
};

/// Why a document can't be decoded; the text is the one that messages quote.
class DecodingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  static DecodingError typeMismatch(std::string_view expected, NodeKind found, const CodingPath& path);
  static DecodingError keyNotFound(std::string_view key, const CodingPath& path);
  static DecodingError dataCorrupted(std::string_view why, const CodingPath& path = {});
};

/// Receives a record field by field.
class Encoder {
 public:
  virtual ~Encoder() = default;
  virtual void beginDictionary() = 0;
  virtual void key(std::string_view name) = 0;
  virtual void endDictionary() = 0;
  virtual void beginArray() = 0;
  virtual void endArray() = 0;
  virtual void string(std::string_view value) = 0;
  virtual void integer(std::int64_t value) = 0;
  virtual void boolean(bool value) = 0;
};

template <class T>
concept Record = requires {
  T::fields();
};

void decodeValue(std::string& value, Node& node, CodingPath& path);
void decodeValue(std::int64_t& value, Node& node, CodingPath& path);
void decodeValue(bool& value, Node& node, CodingPath& path);
template <Record T>
void decodeValue(T& record, Node& node, CodingPath& path);
template <class T>
void decodeValue(std::optional<T>& value, Node& node, CodingPath& path);
template <class T>
void decodeValue(std::vector<T>& values, Node& node, CodingPath& path);

inline void encodeValue(const std::string& value, Encoder& out) {
  out.string(value);
}
inline void encodeValue(std::int64_t value, Encoder& out) {
  out.integer(value);
}
inline void encodeValue(bool value, Encoder& out) {
  out.boolean(value);
}
template <Record T>
void encodeValue(const T& record, Encoder& out);
template <class T>
void encodeValue(const std::vector<T>& values, Encoder& out);

/// One key of a record and how its member is read and written.
template <class T>
struct FieldOf {
  std::string_view key;
  void (*decode)(T&, Node&, CodingPath&);
  void (*encode)(const T&, std::string_view key, Encoder&);
  bool required = false;
};

namespace detail {
template <class M>
struct MemberPointer;
template <class T, class V>
struct MemberPointer<V T::*> {
  using Class = T;
};
template <auto Member>
using ClassOf = typename MemberPointer<decltype(Member)>::Class;

template <class V>
inline constexpr bool isOptional = false;
template <class V>
inline constexpr bool isOptional<std::optional<V>> = true;
}  // namespace detail

template <auto Member>
constexpr FieldOf<detail::ClassOf<Member>> field(std::string_view key) {
  using T = detail::ClassOf<Member>;
  return {key, [](T& record, Node& node, CodingPath& path) { decodeValue(record.*Member, node, path); },
          [](const T& record, std::string_view name, Encoder& out) {
            const auto& value = record.*Member;
            if constexpr (detail::isOptional<std::remove_cvref_t<decltype(value)>>) {
              if (!value) return;
              out.key(name);
              encodeValue(*value, out);
            } else {
              out.key(name);
              encodeValue(value, out);
            }
          }};
}

/// A key without which the document can't be decoded.
template <auto Member>
constexpr FieldOf<detail::ClassOf<Member>> requiredField(std::string_view key) {
  auto made = field<Member>(key);
  made.required = true;
  return made;
}

/// Asks the node for each key of the list.
template <Record T, class List>
void decodeByKey(T& record, Node& node, CodingPath& path, const List& list) {
  for (const auto& entry : list) {
    const bool found = node.member(entry.key, [&](Node& child) {
      path.enter(entry.key);
      entry.decode(record, child, path);
      path.leave();
    });
    if (!found && entry.required) throw DecodingError::keyNotFound(entry.key, path);
  }
}

template <Record T>
void decodeValue(T& record, Node& node, CodingPath& path) {
  static constexpr auto list = T::fields();
  if (node.kind() != NodeKind::dictionary) {
    throw DecodingError::typeMismatch("Dictionary<String, Any>", node.kind(), path);
  }
  if (node.hasRandomAccess()) return decodeByKey(record, node, path, list);
  std::array<bool, list.size()> seen{};
  std::size_t next = 0;  // keys mostly come in the order of the list
  node.forEachMember([&](std::string_view key, Node& child) {
    for (std::size_t tried = 0; tried < list.size(); ++tried) {
      const std::size_t index = next + tried < list.size() ? next + tried : next + tried - list.size();
      if (list[index].key != key) continue;
      next = index + 1 == list.size() ? 0 : index + 1;
      if (child.kind() == NodeKind::null) break;
      path.enter(list[index].key);
      list[index].decode(record, child, path);
      path.leave();
      seen[index] = true;
      return;
    }
    child.skip();
  });
  for (std::size_t index = 0; index < list.size(); ++index) {
    if (list[index].required && !seen[index]) throw DecodingError::keyNotFound(list[index].key, path);
  }
}

template <class T>
void decodeValue(std::optional<T>& value, Node& node, CodingPath& path) {
  decodeValue(value.emplace(), node, path);
}

template <class T>
void decodeValue(std::vector<T>& values, Node& node, CodingPath& path) {
  if (node.kind() != NodeKind::array) throw DecodingError::typeMismatch("Array<Any>", node.kind(), path);
  values.clear();
  std::int64_t index = 0;
  node.forEachElement([&](Node& child) {
    path.enter(index++);
    decodeValue(values.emplace_back(), child, path);
    path.leave();
  });
}

template <Record T>
void encodeValue(const T& record, Encoder& out) {
  static constexpr auto list = T::fields();
  out.beginDictionary();
  for (const auto& entry : list) entry.encode(record, entry.key, out);
  out.endDictionary();
}

template <class T>
void encodeValue(const std::vector<T>& values, Encoder& out) {
  out.beginArray();
  for (const auto& value : values) encodeValue(value, out);
  out.endArray();
}

}  // namespace vorlu
