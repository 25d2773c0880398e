#include "vorlu/state/safe_property_list.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vorlu {
namespace {

// Far above any list that the agent reads.
constexpr std::size_t depthLimit = 128;
constexpr std::size_t objectLimit = 200'000;
constexpr std::size_t byteLimit = 16 << 20;  // of a file, and of what a binary one's texts and data unfold to
constexpr std::size_t xmlContainerLimit = 10'000;

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<std::uint8_t>(byte);
  return number;
}

/// The object graph of a binary list.
class BinaryGraph {
 public:
  explicit BinaryGraph(std::string_view bytes) : bytes_(bytes) {}

  /// Whether the tree that the root's references unfold to stays within the limits, with keys that can be read.
  bool isSafe() {
    constexpr std::size_t trailerSize = 32;
    if (bytes_.size() < trailerSize) return false;
    const std::string_view trailer = bytes_.substr(bytes_.size() - trailerSize);
    offsetWidth_ = bigEndian(trailer.substr(6, 1));
    referenceWidth_ = bigEndian(trailer.substr(7, 1));
    const std::uint64_t objects = bigEndian(trailer.substr(8, 8));
    table_ = bigEndian(trailer.substr(24, 8));
    if (!isWidth(offsetWidth_) || !isWidth(referenceWidth_) || table_ > bytes_.size()) return false;
    if (objects > objectLimit || objects > (bytes_.size() - table_) / offsetWidth_) return false;
    trees_.assign(objects, {});
    return unfold(bigEndian(trailer.substr(16, 8)), 0).has_value();
  }

 private:
  static bool isWidth(std::uint64_t width) { return width >= 1 && width <= 8; }

  /// What one object unfolds to, itself included.
  struct Tree {
    std::size_t objects = 0;  ///< 0: not known yet
    std::size_t bytes = 0;    ///< of its texts, keys and data
    std::size_t height = 0;   ///< levels below it
  };

  /// Nothing beyond the limits or outside the file. An object that is referred to again counts again, at its new depth.
  std::optional<Tree> unfold(std::uint64_t object, std::size_t depth) {
    if (object >= trees_.size() || depth + trees_[object].height > depthLimit) return std::nullopt;
    if (trees_[object].objects != 0) return trees_[object];
    const auto read = objectAt(object);
    if (!read || (read->kind == dictionary && !keysAreSafe(*read))) return std::nullopt;
    const auto all = references(*read);
    if (!all || sizeOf(*read) > byteLimit) return std::nullopt;
    Tree tree{1, sizeOf(*read), 0};
    for (std::string_view rest = *all; !rest.empty(); rest.remove_prefix(referenceWidth_)) {
      const auto child = unfold(bigEndian(rest.substr(0, referenceWidth_)), depth + 1);
      if (!child || tree.objects + child->objects > objectLimit || tree.bytes + child->bytes > byteLimit)
        return std::nullopt;
      tree = {tree.objects + child->objects, tree.bytes + child->bytes, std::max(tree.height, child->height + 1)};
    }
    return trees_[object] = tree;
  }

  /// What an object's marker says. `count` means bytes of data, characters of a text, references of an array, pairs of
  /// a dictionary.
  struct Object {
    unsigned kind;
    std::uint64_t count;
    std::uint64_t contents;  ///< where they begin in the file
  };
  static constexpr unsigned data = 4, asciiText = 5, wideText = 6, array = 10, dictionary = 13;

  /// Nothing when it leaves the file.
  std::optional<Object> objectAt(std::uint64_t object) const {
    std::uint64_t at = bigEndian(bytes_.substr(table_ + object * offsetWidth_, offsetWidth_));
    if (at >= bytes_.size()) return std::nullopt;
    const unsigned marker = static_cast<std::uint8_t>(bytes_[at++]);
    Object read{marker >> 4, marker & 0x0f, at};
    const bool isCounted = hasBytes(read) || read.kind >= array;
    if (!isCounted || read.count != 0x0f) return read;
    // the count is an integer object of its own
    const unsigned size = at < bytes_.size() ? static_cast<std::uint8_t>(bytes_[at++]) : 0;
    if (size < 0x10 || size > 0x13) return std::nullopt;
    const std::size_t width = std::size_t{1} << (size & 0x0f);
    return Object{read.kind, bigEndian(bytes_.substr(at, width)), at + width};
  }

  static bool hasBytes(const Object& object) { return object.kind >= data && object.kind <= wideText; }

  /// Bytes of data or of a text's characters, at least; 0 of any other object.
  static std::uint64_t sizeOf(const Object& object) { return hasBytes(object) ? object.count : 0; }

  /// `count` items of `width` bytes each; nothing when they leave the file.
  std::optional<std::string_view> items(const Object& object, std::uint64_t width) const {
    if (object.contents > bytes_.size() || object.count > (bytes_.size() - object.contents) / width)
      return std::nullopt;
    return bytes_.substr(object.contents, object.count * width);
  }

  /// Those of an array, set or dictionary, where the keys come first; none of any other object.
  std::optional<std::string_view> references(const Object& object) const {
    if (object.kind < array) return std::string_view{};
    return items(object, (object.kind >= dictionary ? 2 : 1) * referenceWidth_);
  }

  /// Keys count before they are read: dictionaries within each other may have the same ones, and long.
  bool keysAreSafe(const Object& object) {
    auto rest = items(object, referenceWidth_);
    if (!rest || object.count > objectLimit - keys_) return false;
    keys_ += object.count;
    std::vector<std::size_t> keys;
    keys.reserve(object.count);
    for (; !rest->empty(); rest->remove_prefix(referenceWidth_)) {
      const std::uint64_t key = bigEndian(rest->substr(0, referenceWidth_));
      const auto text = key < trees_.size() ? objectAt(key) : std::nullopt;
      if (!text || sizeOf(*text) > byteLimit - keyBytes_) return false;
      keyBytes_ += sizeOf(*text);
      const auto print = fingerprint(*text);
      if (!print) return false;
      keys.push_back(*print);
    }
    std::sort(keys.begin(), keys.end());
    return std::adjacent_find(keys.begin(), keys.end()) == keys.end();
  }

  /// The same number for the same key, narrow or wide. Nothing for what is no text, has a zero, or isn't well formed:
  /// the parser drops such characters, so that two keys would become one.
  std::optional<std::size_t> fingerprint(const Object& key) const {
    if (key.kind == wideText) return wideFingerprint(items(key, 2));
    if (key.kind != asciiText) return std::nullopt;
    const auto text = items(key, 1);
    const auto isAscii = [](char character) { return static_cast<signed char>(character) > 0; };
    if (!text || !std::all_of(text->begin(), text->end(), isAscii)) return std::nullopt;
    return std::hash<std::string_view>{}(*text);
  }

  static std::optional<std::size_t> wideFingerprint(std::optional<std::string_view> text) {
    if (!text) return std::nullopt;
    std::string narrow;
    bool isWithinPair = false;
    for (; !text->empty(); text->remove_prefix(2)) {
      const std::uint64_t character = bigEndian(text->substr(0, 2));
      const bool isSecond = character >= 0xdc00 && character < 0xe000;
      if (character == 0 || isSecond != isWithinPair) return std::nullopt;
      isWithinPair = character >= 0xd800 && character < 0xdc00;
      if (character > 0x7f) narrow.append(1, '\xff').append(1, static_cast<char>(character >> 8));
      narrow += static_cast<char>(character);
    }
    if (isWithinPair) return std::nullopt;
    return std::hash<std::string_view>{}(narrow);
  }

  std::string_view bytes_;
  std::uint64_t offsetWidth_ = 0;
  std::uint64_t referenceWidth_ = 0;
  std::uint64_t table_ = 0;
  std::size_t keys_ = 0;      ///< of the dictionaries so far
  std::size_t keyBytes_ = 0;  ///< of their texts
  std::vector<Tree> trees_;   ///< by object
};

std::size_t occurrences(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

}  // namespace

bool isSafePropertyList(std::string_view bytes) {
  if (bytes.size() > byteLimit) return false;
  if (bytes.starts_with("bplist")) return BinaryGraph(bytes).isSafe();
  constexpr std::string_view array = "<array", dictionary = "<dict";
  if (bytes.size() / dictionary.size() <= xmlContainerLimit) return true;
  return occurrences(bytes, array) + occurrences(bytes, dictionary) <= xmlContainerLimit;
}

}  // namespace vorlu
