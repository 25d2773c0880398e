#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace vorlu {

enum class NodeKind { null, boolean, integer, number, string, array, dictionary, other };

/// How a decoding error names what it found, with its article.
std::string_view describe(NodeKind kind);

/// One value of a JSON document or property list while it is being read. Each node is read at most once, in document
/// order: the text may be parsed as it goes. Reading a node as another kind than `kind()` says throws DecodingError.
class Node {
 public:
  virtual ~Node() = default;

  virtual NodeKind kind() = 0;
  virtual bool boolean() = 0;
  /// Nothing when the number has a fraction or is too large.
  virtual std::optional<std::int64_t> integer() = 0;
  /// Valid until the document is gone.
  virtual std::string_view text() = 0;
  virtual void forEachElement(const std::function<void(Node&)>& read) = 0;
  virtual void forEachMember(const std::function<void(std::string_view key, Node&)>& read) = 0;
  /// Whether `member` can be asked: the document was parsed whole.
  virtual bool hasRandomAccess() { return false; }
  /// Hands the value of a key of a dictionary to `read`; false when there is none.
  virtual bool member(std::string_view /*key*/, const std::function<void(Node&)>& /*read*/) { return false; }
  /// Passes over the value, which must still be well formed.
  virtual void skip() = 0;
};

}  // namespace vorlu
