#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "vorlu/platform/result.h"
#include "vorlu/state/record.h"

namespace vorlu {

/// Whether text may stand in a JSON document or a URL as it is.
bool isUtf8(std::string_view text);

/// Parses `text` and hands its root to `read`; what `read` throws as a DecodingError, and text that is no JSON, become
/// the failure. `text` gets spare bytes behind its end when it lacks them.
Status readJson(std::string& text, const std::function<void(Node&)>& read);

enum class JsonLayout { compact, pretty };
/// What `write` sends to the encoder, as JSON. Text that isn't UTF-8 is replaced character by character.
std::string writeJson(JsonLayout layout, const std::function<void(Encoder&)>& write);

/// A record, or an array of records, from JSON.
template <class T>
Result<T> decodeJson(std::string text) {
  T value{};
  Status status = readJson(text, [&value](Node& root) {
    CodingPath path;
    decodeValue(value, root, path);
  });
  if (!status) return status.failure();
  return value;
}

template <class T>
std::string encodeJson(const T& value, JsonLayout layout) {
  return writeJson(layout, [&value](Encoder& out) { encodeValue(value, out); });
}

}  // namespace vorlu
