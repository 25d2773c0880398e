#include "vorlu/state/json.h"

#include <simdjson.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

namespace vorlu {
namespace {

namespace ondemand = simdjson::ondemand;

[[noreturn]] void throwBroken(simdjson::error_code error) {
  throw DecodingError::dataCorrupted(std::string("The given data was not valid JSON. ") +
                                     simdjson::error_message(error));
}

template <class T>
T orThrow(simdjson::simdjson_result<T> result) {
  T value;
  if (const auto error = std::move(result).get(value)) throwBroken(error);
  return value;
}

NodeKind kindOf(ondemand::json_type type) {
  switch (type) {
    case ondemand::json_type::array:
      return NodeKind::array;
    case ondemand::json_type::object:
      return NodeKind::dictionary;
    case ondemand::json_type::number:
      return NodeKind::number;
    case ondemand::json_type::string:
      return NodeKind::string;
    case ondemand::json_type::boolean:
      return NodeKind::boolean;
    case ondemand::json_type::null:
      break;
  }
  return NodeKind::null;
}

/// The text of a string token of `size` bytes, where it stands in the document; nothing when it has escapes, which need
/// a copy. `token` begins at the opening quote and reaches at least to the closing one.
std::optional<std::string_view> plainText(const char* token, std::size_t size) {
  const char* const begin = token + 1;
  const auto* const end = static_cast<const char*>(std::memchr(begin, '"', size - 1));
  if (end == nullptr) return std::nullopt;
  const auto length = static_cast<std::size_t>(end - begin);
  if (std::memchr(begin, '\\', length) != nullptr) return std::nullopt;
  return std::string_view(begin, length);
}

/// The same for a key, whose closing quote is near.
std::optional<std::string_view> plainKey(const char* begin) {
  const char* end = begin;
  for (; *end != '"'; ++end) {
    if (*end == '\\') return std::nullopt;
  }
  return std::string_view(begin, static_cast<std::size_t>(end - begin));
}

/// Reading a level of arrays and dictionaries takes some stack; no document that the agent knows has ten of them.
constexpr int depthLimit = 512;

/// A value, parsed as it is read.
class JsonNode : public Node {
 public:
  explicit JsonNode(ondemand::value value, int depth = 0)
      : value_(value), kind_(kindOf(orThrow(value_.type()))), depth_(depth) {
    if (depth > depthLimit) throwBroken(simdjson::DEPTH_ERROR);
  }

  NodeKind kind() override { return kind_; }
  bool boolean() override { return orThrow(value_.get_bool()); }
  std::optional<std::int64_t> integer() override {
    std::int64_t whole = 0;
    if (value_.get_int64().get(whole) == simdjson::SUCCESS) return whole;
    const double number = orThrow(value_.get_double());
    if (std::trunc(number) != number || std::abs(number) > 9007199254740992.0) return std::nullopt;
    return static_cast<std::int64_t>(number);
  }
  std::string_view text() override {
    const std::string_view token = value_.raw_json_token();
    const auto plain = plainText(token.data(), token.size());
    if (!plain) return orThrow(value_.get_string());
    orThrow(value_.get_raw_json_string());  // a text that isn't taken could be passed over as a key, with what follows
    return *plain;
  }

  void forEachElement(const std::function<void(Node&)>& read) override {
    for (auto element : orThrow(value_.get_array())) {
      JsonNode child(orThrow(std::move(element)), depth_ + 1);
      read(child);
    }
  }

  void forEachMember(const std::function<void(std::string_view, Node&)>& read) override {
    for (auto member : orThrow(value_.get_object())) {
      const auto plain = plainKey(orThrow(member.key()).raw());
      const std::string_view key = plain ? *plain : orThrow(member.unescaped_key());
      JsonNode child(orThrow(member.value()), depth_ + 1);
      read(key, child);
    }
  }

  void skip() override {
    switch (kind_) {
      case NodeKind::array:
        forEachElement([](Node& child) { child.skip(); });
        break;
      case NodeKind::dictionary:
        forEachMember([](std::string_view, Node& child) { child.skip(); });
        break;
      case NodeKind::boolean:
        boolean();
        break;
      case NodeKind::string:
        text();
        break;
      case NodeKind::null:
        if (!orThrow(value_.is_null())) throwBroken(simdjson::N_ATOM_ERROR);
        break;
      default:
        orThrow(value_.get_double());
    }
  }

 private:
  ondemand::value value_;
  NodeKind kind_;
  int depth_;
};

/// A document that is one bare scalar: no record can be made of it, only its kind is told.
class ScalarRoot : public Node {
 public:
  explicit ScalarRoot(NodeKind kind) : kind_(kind) {}
  NodeKind kind() override { return kind_; }
  bool boolean() override { throwBroken(simdjson::SCALAR_DOCUMENT_AS_VALUE); }
  std::optional<std::int64_t> integer() override { throwBroken(simdjson::SCALAR_DOCUMENT_AS_VALUE); }
  std::string_view text() override { throwBroken(simdjson::SCALAR_DOCUMENT_AS_VALUE); }
  void forEachElement(const std::function<void(Node&)>&) override { throwBroken(simdjson::SCALAR_DOCUMENT_AS_VALUE); }
  void forEachMember(const std::function<void(std::string_view, Node&)>&) override {
    throwBroken(simdjson::SCALAR_DOCUMENT_AS_VALUE);
  }
  void skip() override {}

 private:
  NodeKind kind_;
};

class JsonEncoder : public Encoder {
 public:
  explicit JsonEncoder(JsonLayout layout) : pretty_(layout == JsonLayout::pretty) {}

  void beginDictionary() override { open('{'); }
  void endDictionary() override { close('}'); }
  void beginArray() override { open('['); }
  void endArray() override { close(']'); }
  void key(std::string_view name) override {
    separate();
    quote(name);
    text_ += pretty_ ? " : " : ":";
    afterKey_ = true;
  }
  void string(std::string_view value) override {
    separate();
    quote(value);
  }
  void integer(std::int64_t value) override {
    separate();
    text_ += std::to_string(value);
  }
  void boolean(bool value) override {
    separate();
    text_ += value ? "true" : "false";
  }

  std::string take() { return std::move(text_); }

 private:
  void open(char bracket) {
    separate();
    text_ += bracket;
    empty_.push_back(true);
  }
  void close(char bracket) {
    const bool wasEmpty = empty_.back();
    empty_.pop_back();
    if (!wasEmpty) newLine();
    text_ += bracket;
  }
  void separate() {
    if (afterKey_) {
      afterKey_ = false;
      return;
    }
    if (empty_.empty()) return;
    if (!empty_.back()) text_ += ',';
    empty_.back() = false;
    newLine();
  }
  void newLine() {
    if (!pretty_) return;
    text_ += '\n';
    text_.append(2 * empty_.size(), ' ');
  }
  void quote(std::string_view value) {
    const auto isPlain = [](char c) { return c >= ' ' && c < 0x7f && c != '"' && c != '\\'; };
    if (std::all_of(value.begin(), value.end(), isPlain)) {
      text_.append(1, '"').append(value).append(1, '"');
      return;
    }
    text_ += nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  }

  bool pretty_;
  std::string text_;
  std::vector<bool> empty_;
  bool afterKey_ = false;
};

}  // namespace

bool isUtf8(std::string_view text) {
  return simdjson::validate_utf8(text.data(), text.size());
}

Status readJson(std::string& text, const std::function<void(Node&)>& read) {
  try {
    text.reserve(text.size() + simdjson::SIMDJSON_PADDING);
    ondemand::parser parser;
    ondemand::document document;
    const simdjson::padded_string_view view(text.data(), text.size(), text.capacity());
    if (const auto error = parser.iterate(view).get(document)) throwBroken(error);
    if (orThrow(document.is_scalar())) {
      ScalarRoot root(kindOf(orThrow(document.type())));
      read(root);
      return success();
    }
    JsonNode root(orThrow(document.get_value()));
    read(root);
    if (!document.current_location().error()) throwBroken(simdjson::TRAILING_CONTENT);
    return success();
  } catch (const DecodingError& error) {
    return Failure{error.what()};
  }
}

std::string writeJson(JsonLayout layout, const std::function<void(Encoder&)>& write) {
  JsonEncoder encoder(layout);
  write(encoder);
  return encoder.take();
}

}  // namespace vorlu
