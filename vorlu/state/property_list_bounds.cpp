#include "vorlu/state/property_list_bounds.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vorlu {
namespace {

// Far above any list that the agent reads.
constexpr std::size_t depthLimit = 512;
constexpr std::uint64_t objectLimit = 2'000'000;
constexpr std::size_t xmlContainerLimit = 50'000;

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<std::uint8_t>(byte);
  return number;
}

/// The object graph of a binary list.
class BinaryGraph {
 public:
  explicit BinaryGraph(std::string_view bytes) : bytes_(bytes) {}

  /// Whether the tree that the root's references unfold to stays within the limits.
  bool isBounded() {
    constexpr std::size_t trailerSize = 32;
    if (bytes_.size() < trailerSize) return false;
    const std::string_view trailer = bytes_.substr(bytes_.size() - trailerSize);
    offsetWidth_ = bigEndian(trailer.substr(6, 1));
    referenceWidth_ = bigEndian(trailer.substr(7, 1));
    const std::uint64_t objects = bigEndian(trailer.substr(8, 8));
    table_ = bigEndian(trailer.substr(24, 8));
    if (!isWidth(offsetWidth_) || !isWidth(referenceWidth_) || table_ > bytes_.size()) return false;
    if (objects > (bytes_.size() - table_) / offsetWidth_) return false;
    unfolded_.assign(objects, 0);
    return unfold(bigEndian(trailer.substr(16, 8)), 0) <= objectLimit;
  }

 private:
  static constexpr std::uint64_t tooMany = objectLimit + 1;

  static bool isWidth(std::uint64_t width) { return width >= 1 && width <= 8; }

  /// Objects that `object` unfolds to, itself included; `tooMany` beyond the limits or outside the file.
  std::uint64_t unfold(std::uint64_t object, std::size_t depth) {
    if (object >= unfolded_.size() || depth > depthLimit) return tooMany;
    if (unfolded_[object] != 0) return unfolded_[object];
    const std::uint64_t at = bigEndian(bytes_.substr(table_ + object * offsetWidth_, offsetWidth_));
    if (at >= bytes_.size()) return tooMany;
    std::optional<std::string_view> references = referencesAt(at);
    if (!references) return tooMany;
    std::uint64_t total = 1;
    for (; !references->empty() && total <= objectLimit; references->remove_prefix(referenceWidth_)) {
      total += unfold(bigEndian(references->substr(0, referenceWidth_)), depth + 1);
    }
    if (total > objectLimit) return tooMany;
    unfolded_[object] = static_cast<std::uint32_t>(total);
    return total;
  }

  /// The references of an array, set or dictionary, none of any other object; nothing when they leave the file.
  std::optional<std::string_view> referencesAt(std::uint64_t at) const {
    const auto marker = static_cast<std::uint8_t>(bytes_[at++]);
    if (marker < 0xa0) return std::string_view{};
    std::uint64_t count = marker & 0x0f;
    if (count == 0x0f) {  // the count is an integer object of its own
      const unsigned size = at < bytes_.size() ? static_cast<std::uint8_t>(bytes_[at++]) : 0;
      if (size < 0x10 || size > 0x13) return std::nullopt;
      const std::size_t width = std::size_t{1} << (size & 0x0f);
      count = bigEndian(bytes_.substr(at, width));
      at += width;
    }
    const std::uint64_t perItem = (marker >= 0xd0 ? 2 : 1) * referenceWidth_;
    if (at > bytes_.size() || count > (bytes_.size() - at) / perItem) return std::nullopt;
    return bytes_.substr(at, count * perItem);
  }

  std::string_view bytes_;
  std::uint64_t offsetWidth_ = 0;
  std::uint64_t referenceWidth_ = 0;
  std::uint64_t table_ = 0;
  std::vector<std::uint32_t> unfolded_;  ///< by object; 0: not known yet
};

std::size_t occurrences(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

}  // namespace

bool isBoundedPropertyList(std::string_view bytes) {
  if (bytes.starts_with("bplist")) return BinaryGraph(bytes).isBounded();
  return occurrences(bytes, "<array") + occurrences(bytes, "<dict") <= xmlContainerLimit;
}

}  // namespace vorlu
