#include "ctl/lint/xml_property_list.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <set>
#include <utility>

namespace vorlu::ctl {
namespace {

struct FreeParser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

struct ElementKind {
  std::string_view name;
  NodeKind kind;
};
constexpr std::array elementKinds = {
    ElementKind{"dict", NodeKind::dictionary}, ElementKind{"array", NodeKind::array},
    ElementKind{"string", NodeKind::string},   ElementKind{"integer", NodeKind::integer},
    ElementKind{"real", NodeKind::number},     ElementKind{"true", NodeKind::boolean},
    ElementKind{"false", NodeKind::boolean},   ElementKind{"date", NodeKind::other},
    ElementKind{"data", NodeKind::other},
};

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  return start == std::string_view::npos ? "" : text.substr(start, text.find_last_not_of(" \t\r\n") + 1 - start);
}

/// The number of an `integer` or `real` element; false when it is none.
bool readNumber(std::string_view text, LocatedValue& value) {
  text = withoutBlanks(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  if (value.kind == NodeKind::integer) {
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    if (hex) text.remove_prefix(2);
    std::int64_t whole = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), whole, hex ? 16 : 10);
    if (error == std::errc::result_out_of_range) return true;
    if (error == std::errc() && end == text.data() + text.size()) value.integer = whole;
    return value.integer.has_value();
  }
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return error == std::errc::result_out_of_range;
  if (std::trunc(number) == number && std::abs(number) <= 9007199254740992.0)
    value.integer = static_cast<std::int64_t>(number);
  return true;
}

/// Builds the tree from the parser's events. The parser stops at the first fault.
class PlistBuilder {
 public:
  PlistBuilder(XML_Parser parser, Findings& findings) : parser_(parser), findings_(findings) {
    XML_SetUserData(parser, this);
    XML_SetElementHandler(
        parser,
        [](void* self, const XML_Char* name, const XML_Char**) { static_cast<PlistBuilder*>(self)->start(name); },
        [](void* self, const XML_Char* name) { static_cast<PlistBuilder*>(self)->end(name); });
    XML_SetCharacterDataHandler(parser, [](void* self, const XML_Char* text, int length) {
      static_cast<PlistBuilder*>(self)->text_.append(text, static_cast<std::size_t>(length));
    });
  }

  bool stopped() const { return stopped_; }
  /// Tells why the parser itself stopped.
  void reportXmlError() {
    fault(fmt::format("this isn't well-formed XML: {}", XML_ErrorString(XML_GetErrorCode(parser_))),
          "mend the text here or shortly before it; what follows wasn't looked at");
  }
  std::optional<LocatedValue> take() {
    if (!root_ && !stopped_) fault("this property list is empty", "is this the right file?");
    return stopped_ ? std::nullopt : std::move(root_);
  }

 private:
  struct Open {
    LocatedValue* value;
    std::set<std::string> keys;
    std::optional<LocatedMember> awaited;  ///< key whose value comes next
  };

  Position here() const {
    return {static_cast<std::size_t>(XML_GetCurrentLineNumber(parser_)),
            static_cast<std::size_t>(XML_GetCurrentColumnNumber(parser_)) + 1};
  }

  void fault(std::string problem, std::string advice) { stop(here(), path(), std::move(problem), std::move(advice)); }
  void malformed(std::string problem) { malformed(here(), std::move(problem)); }
  void malformed(Position at, std::string problem) {
    stop(at, path(), std::move(problem), "what follows wasn't looked at");
  }
  void stop(Position at, std::string path, std::string problem, std::string advice) {
    if (stopped_) return;
    stopped_ = true;
    findings_.error(at, std::move(path), std::move(problem), std::move(advice));
    XML_StopParser(parser_, XML_FALSE);
  }

  void start(std::string_view name) {
    if (stopped_) return;
    checkNoText();
    const bool isTop = !inPlist_;
    if (isTop != (name == "plist")) return malformed(fmt::format("<{}> can't stand here in a property list", name));
    inPlist_ = true;
    if (isTop) return;
    if (scalar_) return malformed(fmt::format("<{}> can't stand inside of another value", name));
    scalarAt_ = here();
    if (name == "key") return startKey();
    const auto* const known = std::ranges::find(elementKinds, name, &ElementKind::name);
    if (known == elementKinds.end()) return malformed(fmt::format("<{}> isn't an element of property lists", name));
    LocatedValue value{.kind = known->kind, .at = scalarAt_, .boolean = name == "true"};
    if (value.kind == NodeKind::dictionary || value.kind == NodeKind::array) return openContainer(std::move(value));
    scalar_ = std::move(value);
  }

  void startKey() {
    if (open_.empty() || open_.back().value->kind != NodeKind::dictionary || open_.back().awaited)
      return malformed("a <key> can't stand here: keys and values take turns in a <dict>");
    scalar_ = LocatedValue{.kind = NodeKind::null, .at = scalarAt_};  // a key until its end
  }

  void openContainer(LocatedValue value) {
    LocatedValue* const added = add(std::move(value));
    if (added == nullptr) return;
    if (open_.size() == depthLimit)
      return stop(scalarAt_, "", fmt::format("is nested more than {} levels deep", depthLimit),
                  "no profile needs that; is this the right file?");
    open_.push_back({added, {}, std::nullopt});
  }

  void end(std::string_view name) {
    if (stopped_) return;
    if (scalar_) return endScalar(name);
    checkNoText();
    if (name == "plist" || stopped_) return;
    if (open_.back().awaited) return malformed(fmt::format("the key \"{}\" has no value", open_.back().awaited->key));
    open_.pop_back();
  }

  void endScalar(std::string_view name) {
    const std::string text = std::exchange(text_, {});
    LocatedValue value = std::move(*scalar_);
    scalar_.reset();
    if (value.kind == NodeKind::null) return endKey(text, value.at);
    if (value.kind == NodeKind::string) value.text = text;
    const bool isNumber = value.kind == NodeKind::integer || value.kind == NodeKind::number;
    if (isNumber && !readNumber(text, value))
      return malformed(value.at, fmt::format("<{}> holds \"{}\", which is no number", name, text));
    add(std::move(value));
  }

  void endKey(const std::string& key, Position at) {
    Open& dictionary = open_.back();
    if (!dictionary.keys.insert(key).second) {
      findings_.error(at, memberPath(path(), key), "is given twice in the same dictionary, and only one of them counts",
                      "remove one of them");
    }
    dictionary.awaited = LocatedMember{key, at, {}};
  }

  /// Null when a value can't stand here.
  LocatedValue* add(LocatedValue value) {
    if (open_.empty()) {
      if (root_) return malformed(value.at, "a property list holds one value, and here is a second one"), nullptr;
      return &root_.emplace(std::move(value));
    }
    Open& parent = open_.back();
    if (parent.value->kind == NodeKind::array) return &parent.value->elements.emplace_back(std::move(value));
    if (!parent.awaited) return malformed(value.at, "a value without a <key> can't stand in a <dict>"), nullptr;
    parent.awaited->value = std::move(value);
    parent.value->members.push_back(std::move(*parent.awaited));
    parent.awaited.reset();
    return &parent.value->members.back().value;
  }

  void checkNoText() {
    if (scalar_) return;
    const std::string text = std::exchange(text_, {});
    if (!withoutBlanks(text).empty())
      malformed(fmt::format("the text \"{}\" can't stand between elements", withoutBlanks(text).substr(0, 40)));
  }

  /// Of the dictionary or array that is open.
  std::string path() const {
    std::string path;
    for (std::size_t depth = 0; depth + 1 < open_.size(); ++depth) {
      const LocatedValue& value = *open_[depth].value;
      path = value.kind == NodeKind::array ? elementPath(path, value.elements.size() - 1)
                                           : memberPath(path, value.members.back().key);
    }
    return path;
  }

  XML_Parser parser_;
  Findings& findings_;
  std::optional<LocatedValue> root_;
  std::vector<Open> open_;
  std::optional<LocatedValue> scalar_;  ///< the element whose text is being read; of kind null for a key
  Position scalarAt_;
  std::string text_;
  bool inPlist_ = false;
  bool stopped_ = false;
};

}  // namespace

bool looksLikeXml(std::string_view bytes) {
  if (bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff")) return true;
  if (bytes.starts_with("\xef\xbb\xbf")) bytes.remove_prefix(3);
  return withoutBlanks(bytes.substr(0, 4096)).starts_with('<');
}

std::optional<LocatedValue> readXmlPropertyList(std::string_view bytes, Findings& findings) {
  const std::unique_ptr<XML_ParserStruct, FreeParser> parser(XML_ParserCreate(nullptr));
  PlistBuilder builder(parser.get(), findings);
  if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return std::nullopt;
  const XML_Status status = XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
  if (status != XML_STATUS_OK && !builder.stopped()) builder.reportXmlError();
  return builder.take();
}

}  // namespace vorlu::ctl
