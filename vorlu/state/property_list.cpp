#include "vorlu/state/property_list.h"

#include <plist/plist.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "vorlu/state/safe_property_list.h"

namespace vorlu {
namespace {

struct FreePlist {
  void operator()(void* node) const { plist_free(node); }
};
using OwnedPlist = std::unique_ptr<void, FreePlist>;

OwnedPlist parse(std::string_view bytes) {
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max() || !isSafePropertyList(bytes)) return nullptr;
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
  return OwnedPlist(root);
}

NodeKind kindOf(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
      return NodeKind::boolean;
    case PLIST_UINT:
      return NodeKind::integer;
    case PLIST_REAL:
      return NodeKind::number;
    case PLIST_STRING:
      return NodeKind::string;
    case PLIST_ARRAY:
      return NodeKind::array;
    case PLIST_DICT:
      return NodeKind::dictionary;
    default:
      return NodeKind::other;
  }
}

class PlistNode : public Node {
 public:
  explicit PlistNode(plist_t node) : node_(node) {}

  NodeKind kind() override { return kindOf(node_); }
  bool boolean() override {
    std::uint8_t value = 0;
    plist_get_bool_val(node_, &value);
    return value != 0;
  }
  std::optional<std::int64_t> integer() override {
    if (kind() == NodeKind::number) {
      double number = 0;
      plist_get_real_val(node_, &number);
      if (std::trunc(number) != number || std::abs(number) > 9007199254740992.0) return std::nullopt;
      return static_cast<std::int64_t>(number);
    }
    std::uint64_t value = 0;
    plist_get_uint_val(node_, &value);
    return static_cast<std::int64_t>(value);
  }
  std::string_view text() override {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node_, &length);
    return text == nullptr ? std::string_view{} : std::string_view(text, length);
  }
  void forEachElement(const std::function<void(Node&)>& read) override {
    const std::uint32_t count = plist_array_get_size(node_);
    for (std::uint32_t index = 0; index < count; ++index) {
      PlistNode child(plist_array_get_item(node_, index));
      read(child);
    }
  }
  void forEachMember(const std::function<void(std::string_view, Node&)>& read) override {
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node_, &iterator);
    const std::unique_ptr<void, decltype(&std::free)> release(iterator, &std::free);
    while (true) {
      char* key = nullptr;
      plist_t value = nullptr;
      plist_dict_next_item(node_, iterator, &key, &value);
      if (value == nullptr) break;
      const std::unique_ptr<char, decltype(&std::free)> ownedKey(key, &std::free);
      PlistNode child(value);
      read(key, child);
    }
  }
  bool hasRandomAccess() override { return true; }
  bool member(std::string_view key, const std::function<void(Node&)>& read) override {
    PlistNode child(plist_dict_get_item(node_, std::string(key).c_str()));
    if (child.node_ == nullptr) return false;
    read(child);
    return true;
  }
  void skip() override {}

 private:
  plist_t node_;
};

/// Builds the tree of a property list from inside out.
class PlistEncoder : public Encoder {
 public:
  void beginDictionary() override { begin(plist_new_dict()); }
  void endDictionary() override { end(); }
  void beginArray() override { begin(plist_new_array()); }
  void endArray() override { end(); }
  void key(std::string_view name) override { open_.back().key = name; }
  void string(std::string_view value) override { add(plist_new_string(std::string(value).c_str())); }
  void integer(std::int64_t value) override { add(plist_new_uint(static_cast<std::uint64_t>(value))); }
  void boolean(bool value) override { add(plist_new_bool(value ? 1 : 0)); }

  OwnedPlist take() { return std::move(root_); }

 private:
  struct Open {
    plist_t node;
    std::string key;
  };
  void begin(plist_t node) {
    add(node);
    open_.push_back({node, {}});
  }
  void end() { open_.pop_back(); }
  void add(plist_t node) {
    if (open_.empty()) {
      root_.reset(node);
    } else if (plist_get_node_type(open_.back().node) == PLIST_DICT) {
      plist_dict_set_item(open_.back().node, open_.back().key.c_str(), node);
    } else {
      plist_array_append_item(open_.back().node, node);
    }
  }

  OwnedPlist root_;
  std::vector<Open> open_;
};

std::string toXmlText(plist_t root) {
  char* text = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root, &text, &length);
  const std::unique_ptr<char, decltype(&std::free)> release(text, &std::free);
  return text == nullptr ? std::string{} : std::string(text, length);
}

const char* const notAPropertyList = "The given data was not a valid property list.";

}  // namespace

Status readPropertyList(std::string_view bytes, const std::function<void(Node&)>& read) {
  const OwnedPlist root = parse(bytes);
  if (!root) return Failure{DecodingError::dataCorrupted(notAPropertyList).what()};
  try {
    PlistNode node(root.get());
    read(node);
    return success();
  } catch (const DecodingError& error) {
    return Failure{error.what()};
  }
}

std::string writePropertyList(const std::function<void(Encoder&)>& write) {
  PlistEncoder encoder;
  write(encoder);
  return toXmlText(encoder.take().get());
}

struct PropertyDictionary::Root {
  OwnedPlist node;
};

PropertyDictionary::PropertyDictionary(std::unique_ptr<Root> root) : root_(std::move(root)) {}
PropertyDictionary::PropertyDictionary(PropertyDictionary&&) noexcept = default;
PropertyDictionary& PropertyDictionary::operator=(PropertyDictionary&&) noexcept = default;
PropertyDictionary::~PropertyDictionary() = default;

Result<PropertyDictionary> PropertyDictionary::parse(std::string_view bytes) {
  auto root = std::make_unique<Root>(Root{vorlu::parse(bytes)});
  if (!root->node || kindOf(root->node.get()) != NodeKind::dictionary) return Failure{notAPropertyList};
  return PropertyDictionary(std::move(root));
}

void PropertyDictionary::set(const std::string& key, std::string_view value) {
  plist_dict_set_item(root_->node.get(), key.c_str(), plist_new_string(std::string(value).c_str()));
}

void PropertyDictionary::set(const std::string& key, std::int64_t value) {
  plist_dict_set_item(root_->node.get(), key.c_str(), plist_new_uint(static_cast<std::uint64_t>(value)));
}

void PropertyDictionary::set(const std::string& key, bool value) {
  plist_dict_set_item(root_->node.get(), key.c_str(), plist_new_bool(value ? 1 : 0));
}

std::string PropertyDictionary::toXml() const {
  return toXmlText(root_->node.get());
}

}  // namespace vorlu
