#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vorlu/platform/result.h"
#include "vorlu/state/record.h"

namespace vorlu {

/// Parses an XML or binary property list and hands its root to `read`.
Status readPropertyList(std::string_view bytes, const std::function<void(Node&)>& read);
/// What `write` sends to the encoder, as an XML property list.
std::string writePropertyList(const std::function<void(Encoder&)>& write);

/// A record from a property list.
template <class T>
Result<T> decodePropertyList(std::string_view bytes) {
  T value{};
  Status status = readPropertyList(bytes, [&value](Node& root) {
    CodingPath path;
    decodeValue(value, root, path);
  });
  if (!status) return status.failure();
  return value;
}

template <class T>
std::string encodePropertyList(const T& value) {
  return writePropertyList([&value](Encoder& out) { encodeValue(value, out); });
}

/// A property list as a mutable dictionary: keys that the agent doesn't know survive a change of the others.
class PropertyDictionary {
 public:
  static Result<PropertyDictionary> parse(std::string_view bytes);
  PropertyDictionary(PropertyDictionary&&) noexcept;
  PropertyDictionary& operator=(PropertyDictionary&&) noexcept;
  ~PropertyDictionary();

  void set(const std::string& key, std::string_view value);
  void set(const std::string& key, std::int64_t value);
  void set(const std::string& key, bool value);
  std::string toXml() const;  ///< empty when it can't be encoded

 private:
  struct Root;
  explicit PropertyDictionary(std::unique_ptr<Root> root);
  std::unique_ptr<Root> root_;
};

}  // namespace vorlu
