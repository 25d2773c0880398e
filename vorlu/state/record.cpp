#include "vorlu/state/record.h"

#include <fmt/format.h>

namespace vorlu {

std::string_view describe(NodeKind kind) {
  switch (kind) {
    case NodeKind::null:
      return "null";
    case NodeKind::boolean:
      return "a bool";
    case NodeKind::integer:
    case NodeKind::number:
      return "a number";
    case NodeKind::string:
      return "a string";
    case NodeKind::array:
      return "an array";
    case NodeKind::dictionary:
      return "a dictionary";
    case NodeKind::other:
      break;
  }
  return "a date or data";
}

std::string CodingPath::text() const {
  std::string text = "[";
  for (std::size_t depth = 0; depth < depth_; ++depth) {
    const Step& step = steps_[depth];
    if (text.size() > 1) text += ", ";
    text += step.index < 0 ? fmt::format("\"{}\"", step.key) : fmt::format("\"Index {}\"", step.index);
  }
  return text + "]";
}

DecodingError DecodingError::typeMismatch(std::string_view expected, NodeKind found, const CodingPath& path) {
  return DecodingError(
      fmt::format("typeMismatch({0}, Context(codingPath: {1}, debugDescription: \"Expected to decode {0} but found {2} "
                  "instead.\", underlyingError: nil))",
                  expected, path.text(), describe(found)));
}

DecodingError DecodingError::keyNotFound(std::string_view key, const CodingPath& path) {
  return DecodingError(
      fmt::format("keyNotFound({0}, Context(codingPath: {1}, debugDescription: \"No value associated with key {0}.\", "
                  "underlyingError: nil))",
                  key, path.text()));
}

DecodingError DecodingError::dataCorrupted(std::string_view why, const CodingPath& path) {
  return DecodingError(fmt::format(
      "dataCorrupted(Context(codingPath: {}, debugDescription: \"{}\", underlyingError: nil))", path.text(), why));
}

void decodeValue(std::string& value, Node& node, CodingPath& path) {
  if (node.kind() != NodeKind::string) throw DecodingError::typeMismatch("String", node.kind(), path);
  value = node.text();
}

void decodeValue(std::int64_t& value, Node& node, CodingPath& path) {
  const NodeKind kind = node.kind();
  if (kind != NodeKind::integer && kind != NodeKind::number) throw DecodingError::typeMismatch("Int", kind, path);
  const std::optional<std::int64_t> whole = node.integer();
  if (!whole) throw DecodingError::dataCorrupted("Parsed number does not fit in Int.", path);
  value = *whole;
}

void decodeValue(bool& value, Node& node, CodingPath& path) {
  if (node.kind() != NodeKind::boolean) throw DecodingError::typeMismatch("Bool", node.kind(), path);
  value = node.boolean();
}

}  // namespace vorlu
