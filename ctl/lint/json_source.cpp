#include "ctl/lint/json_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <unordered_set>

namespace vorlu::ctl {
namespace {

using Json = nlohmann::json;

constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

/// Follows the parser through the text, which tells its events but not their places.
class TokenCursor {
 public:
  explicit TokenCursor(std::string_view text) : text_(text) {
    if (text.starts_with(byteOrderMark)) end_ = counted_ = byteOrderMark.size();
  }

  /// Goes to the next token and behind it, and answers where it begins.
  Position take() {
    const Position start = next();
    end_ = endOfToken();
    return start;
  }
  /// Goes to the next token.
  Position next() {
    end_ = std::min(text_.find_first_not_of(" \t\r\n,:", end_), text_.size());
    for (; counted_ < end_; ++counted_) {
      const auto byte = static_cast<unsigned char>(text_[counted_]);
      if (byte == '\n')
        at_ = {at_.line + 1, 1};
      else if ((byte & 0xc0U) != 0x80)
        ++at_.column;
    }
    return at_;
  }

 private:
  std::size_t endOfToken() const {
    if (text_.size() == end_) return end_;
    const char first = text_[end_];
    if (first != '"') {
      const bool isBracket = std::string_view("{}[]").find(first) != std::string_view::npos;
      return isBracket ? end_ + 1 : std::min(text_.find_first_of(" \t\r\n,:{}[]\"", end_), text_.size());
    }
    std::size_t at = end_ + 1;
    while (at < text_.size() && text_[at] != '"') at += text_[at] == '\\' ? 2 : 1;
    return std::min(at + 1, text_.size());
  }

  std::string_view text_;
  std::size_t end_ = 0;      ///< of the last token taken
  std::size_t counted_ = 0;  ///< bytes that `at_` has passed
  Position at_{1, 1};
};

/// The parser's own words without its prefix and what it repeats of the text.
std::string reasonOf(const Json::exception& error) {
  std::string reason = error.what();
  if (const std::size_t at = reason.find("] "); at != std::string::npos) reason.erase(0, at + 2);
  if (reason.starts_with("parse error at line")) reason.erase(0, std::min(reason.find(": "), reason.size() - 2) + 2);
  constexpr std::string_view lastRead = "last read: '";
  if (const std::size_t at = reason.find(lastRead); at != std::string::npos) {
    const std::size_t end = reason.rfind('\'');
    if (end >= at + lastRead.size()) reason.erase(at - 2, end + 1 - (at - 2));
  }
  return reason;
}

/// Builds the tree from the parser's events.
class TreeBuilder : public nlohmann::json_sax<Json> {
 public:
  TreeBuilder(std::string_view text, Findings& findings) : cursor_(text), findings_(findings) {}

  bool null() override { return place({}); }
  bool boolean(bool value) override { return place({.kind = NodeKind::boolean, .boolean = value}); }
  bool number_integer(number_integer_t value) override { return place({.kind = NodeKind::integer, .integer = value}); }
  bool number_unsigned(number_unsigned_t value) override {
    const bool fits = value <= static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max());
    return place(
        {.kind = NodeKind::integer, .integer = fits ? std::optional(static_cast<std::int64_t>(value)) : std::nullopt});
  }
  bool number_float(number_float_t value, const string_t&) override {
    const bool whole = std::trunc(value) == value && std::abs(value) <= 9007199254740992.0;
    return place(
        {.kind = NodeKind::number, .integer = whole ? std::optional(static_cast<std::int64_t>(value)) : std::nullopt});
  }
  bool string(string_t& value) override { return place({.kind = NodeKind::string, .text = std::move(value)}); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return open(NodeKind::dictionary); }
  bool start_array(std::size_t) override { return open(NodeKind::array); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }

  bool key(string_t& value) override {
    const Position at = cursor_.take();
    Open& object = open_.back();
    if (!object.keys.insert(value).second) {
      findings_.error(at, memberPath(path(), value), "is given twice in the same object, and the last one counts",
                      "remove one of them");
    }
    object.value->members.push_back({std::move(value), at, {}});
    return true;
  }

  bool parse_error(std::size_t, const std::string&, const Json::exception& error) override {
    findings_.error(cursor_.next(), path(), fmt::format("this isn't JSON: {}", reasonOf(error)),
                    "mend the text here or shortly before it; what follows wasn't looked at");
    return false;
  }

  LocatedValue take() { return std::move(root_); }

 private:
  struct Open {
    LocatedValue* value;
    std::unordered_set<std::string> keys;
  };

  LocatedValue& add(LocatedValue value) {
    value.at = cursor_.take();
    if (open_.empty()) return root_ = std::move(value);
    LocatedValue& parent = *open_.back().value;
    if (parent.kind == NodeKind::array) return parent.elements.emplace_back(std::move(value));
    return parent.members.back().value = std::move(value);
  }
  bool place(LocatedValue value) {
    add(std::move(value));
    return true;
  }
  bool open(NodeKind kind) {
    LocatedValue& value = add({.kind = kind});
    if (open_.size() == depthLimit) {
      findings_.error(value.at, "", fmt::format("is nested more than {} levels deep", depthLimit),
                      "no catalog needs that; is this the right file?");
      return false;
    }
    open_.push_back({&value, {}});
    return true;
  }
  bool close() {
    cursor_.take();
    open_.pop_back();
    return true;
  }
  /// Of the value that is being read.
  std::string path() const {
    std::string path;
    for (const Open& open : open_) {
      const LocatedValue& value = *open.value;
      if (value.kind == NodeKind::array)
        path = elementPath(path, value.elements.empty() ? 0 : value.elements.size() - 1);
      else if (&open != &open_.back() && !value.members.empty())
        path = memberPath(path, value.members.back().key);
    }
    return path;
  }

  TokenCursor cursor_;
  Findings& findings_;
  LocatedValue root_;
  std::vector<Open> open_;
};

}  // namespace

std::optional<LocatedValue> readLocatedJson(std::string_view text, Findings& findings) {
  TreeBuilder builder(text, findings);
  if (!Json::sax_parse(text, &builder)) return std::nullopt;
  return builder.take();
}

}  // namespace vorlu::ctl
