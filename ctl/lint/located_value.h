#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vorlu/state/record.h"

namespace vorlu::ctl {

/// Where something begins in a file, counted from 1, columns in characters. Line 0: the file has no lines.
struct Position {
  std::size_t line = 0;
  std::size_t column = 0;
  auto operator<=>(const Position&) const = default;
};

struct LocatedMember;

/// One value of a JSON document or property list, with its place in the file.
struct LocatedValue {
  NodeKind kind = NodeKind::null;
  Position at{};
  bool boolean = false;
  std::optional<std::int64_t> integer{};  ///< a number without a fraction
  std::string text{};                     ///< a string's
  std::vector<LocatedValue> elements{};
  std::vector<LocatedMember> members;  ///< in the order of the file; a key may come twice

  /// The value that counts for a key, which is its last one; null when there is none.
  LocatedValue* find(std::string_view key);
  const LocatedValue* find(std::string_view key) const;
};

struct LocatedMember {
  std::string key;
  Position at;  ///< of the key
  LocatedValue value;
};

/// Levels of arrays and dictionaries that are read; a file with more was made to break its reader.
inline constexpr std::size_t depthLimit = 200;

/// Path of a member or element, as findings show it: "[3].sourceItems[0]", "ScheduledUpdates.customIcon".
std::string memberPath(std::string_view parent, std::string_view key);
std::string elementPath(std::string_view parent, std::size_t index);

/// The value that a path of this form leads to, or the last one on the way that exists.
const LocatedValue& locate(const LocatedValue& root, std::string_view path);

/// A value as the decoders read it.
class LocatedNode : public Node {
 public:
  explicit LocatedNode(const LocatedValue& value) : value_(value) {}
  NodeKind kind() override { return value_.kind; }
  bool boolean() override { return value_.boolean; }
  std::optional<std::int64_t> integer() override { return value_.integer; }
  std::string_view text() override { return value_.text; }
  void forEachElement(const std::function<void(Node&)>& read) override;
  void forEachMember(const std::function<void(std::string_view, Node&)>& read) override;
  void skip() override {}

 private:
  const LocatedValue& value_;
};

/// The agent's record of a value whose types have been looked at before.
template <Record T>
T decodeLocated(const LocatedValue& value) {
  T record;
  LocatedNode node(value);
  CodingPath path;
  decodeValue(record, node, path);
  return record;
}

}  // namespace vorlu::ctl
