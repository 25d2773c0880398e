#include "ctl/lint/key_check.h"

#include <fmt/format.h>

#include "ctl/lint/spelling.h"

namespace vorlu::ctl {
namespace {

std::string_view wanted(KeyType type) {
  switch (type) {
    case KeyType::text:
      return "a text";
    case KeyType::integer:
      return "a whole number";
    case KeyType::boolean:
      return "true or false";
    case KeyType::textList:
      return "a list of texts";
    case KeyType::section:
      break;
  }
  return "a dictionary of keys";
}

std::string_view found(const LocatedValue& value) {
  switch (value.kind) {
    case NodeKind::string:
      return "a text";
    case NodeKind::boolean:
      return "true or false";
    case NodeKind::integer:
    case NodeKind::number:
      return value.integer ? "a number" : "a number with a fraction or beyond all bounds";
    case NodeKind::array:
      return "a list";
    case NodeKind::dictionary:
      return "a dictionary";
    default:
      return describe(value.kind);
  }
}

std::string adviceFor(const LocatedValue& wrong, std::string_view right) {
  const bool isScalar = wrong.kind != NodeKind::array && wrong.kind != NodeKind::dictionary;
  if (right == wanted(KeyType::text) && isScalar) return "write it as a text";
  const bool isQuoted =
      wrong.kind == NodeKind::string && right != wanted(KeyType::textList) && right != wanted(KeyType::section);
  return isQuoted ? "write the value itself, not a text that says it" : fmt::format("give {}", right);
}

bool fits(const LocatedValue& value, KeyType type) {
  switch (type) {
    case KeyType::text:
      return value.kind == NodeKind::string;
    case KeyType::integer:
      return value.integer.has_value();
    case KeyType::boolean:
      return value.kind == NodeKind::boolean;
    case KeyType::textList:
      return value.kind == NodeKind::array;
    case KeyType::section:
      break;
  }
  return value.kind == NodeKind::dictionary;
}

std::string withStop(std::string_view sentence) {
  return fmt::format("{}{}", sentence, sentence.ends_with('.') || sentence.empty() ? "" : ".");
}

void checkChoice(const std::string& text, const KeyReference& key, RecordLint& lint) {
  if (key.note.choices.empty() || text.empty() || choiceFor(key.note, text)) return;
  const std::vector<std::string_view> choices(key.note.choices.begin(), key.note.choices.end());
  const auto meant = nearestWord(text, choices);
  lint.error(key.path, fmt::format("\"{}\" is none of its values", text),
             meant ? fmt::format("write \"{}\"", *meant) : fmt::format("write {}", quotedChoice(choices)));
  lint.settle(key.path);
}

void checkRange(std::int64_t number, const KeyReference& key, RecordLint& lint) {
  if (!key.note.range) return;
  const auto [lowest, highest] = *key.note.range;
  if (number >= lowest && number <= highest) return;
  const bool open = highest == KeyRange{}.highest;
  const std::string bounds = open ? fmt::format("{} or more", lowest) : fmt::format("{} to {}", lowest, highest);
  lint.error(
      key.path, fmt::format("{} isn't {}", number, bounds),
      fmt::format("give {}{}{}. {}", bounds, key.note.unit.empty() ? "" : " ", key.note.unit, withStop(key.note.help)));
  lint.settle(key.path);
}

}  // namespace

KeyCheck::KeyCheck(std::vector<KeyReference> keys, std::string ifUnreadable)
    : keys_(std::move(keys)), ifUnreadable_(std::move(ifUnreadable)) {
  for (const KeyReference& key : keys_) byPath_.emplace(key.path, &key);
}

void KeyCheck::check(LocatedValue& record, RecordLint& lint) const {
  checkSection(record, "", lint);
}

void KeyCheck::checkSection(LocatedValue& value, const std::string& section, RecordLint& lint) const {
  for (LocatedMember& member : value.members) {
    const std::string path = memberPath(section, member.key);
    const auto known = byPath_.find(path);
    if (known == byPath_.end()) {
      checkUnknown(member, section, lint);
      continue;
    }
    if (member.value.kind == NodeKind::null) continue;
    const KeyReference& key = *known->second;
    if (!hasRightType(member.value, key, lint)) {
      lint.settle(path);
      member.value = {.at = member.value.at};
    } else if (key.type == KeyType::section) {
      checkSection(member.value, path, lint);
    } else {
      checkValue(member.value, key, lint);
    }
  }
}

void KeyCheck::checkUnknown(const LocatedMember& member, const std::string& section, RecordLint& lint) const {
  std::vector<std::string_view> here;
  std::vector<std::string_view> everywhere;
  std::string places;
  for (const KeyReference& key : keys_) {
    (key.section() == section ? here : everywhere).push_back(key.key());
    if (key.key() == member.key)
      places += (places.empty() ? "" : " or ") + (key.section().empty() ? "the top level" : std::string(key.section()));
  }
  const std::string path = memberPath(section, member.key);
  if (!places.empty())
    return lint.errorAt(member.at, path, "doesn't belong here, so it is ignored", fmt::format("move it to {}", places));
  if (const auto meant = nearestWord(member.key, here)) {
    lint.errorAt(member.at, path, "is no key, so it is ignored", fmt::format("write {}", *meant));
    return lint.settle(memberPath(section, *meant));
  }
  const auto elsewhere = nearestWord(member.key, everywhere);
  lint.errorAt(member.at, path, "is no key, so it is ignored",
               elsewhere ? fmt::format("remove it; {} is a key of another place", *elsewhere) : "remove it");
}

bool KeyCheck::hasRightType(const LocatedValue& value, const KeyReference& key, RecordLint& lint) const {
  const auto refuse = [&](const std::string& path, const LocatedValue& wrong, std::string_view right) {
    lint.errorAt(wrong.at, path, fmt::format("is {}, and has to be {}: {}", found(wrong), right, ifUnreadable_),
                 adviceFor(wrong, right));
  };
  if (!fits(value, key.type)) {
    refuse(key.path, value, wanted(key.type));
    return false;
  }
  for (std::size_t index = 0; key.type == KeyType::textList && index < value.elements.size(); ++index) {
    if (value.elements[index].kind == NodeKind::string) continue;
    refuse(elementPath(key.path, index), value.elements[index], "a text");
    return false;
  }
  return true;
}

void KeyCheck::checkValue(const LocatedValue& value, const KeyReference& key, RecordLint& lint) const {
  if (key.type == KeyType::text) checkChoice(value.text, key, lint);
  if (key.type == KeyType::integer) checkRange(*value.integer, key, lint);
}

}  // namespace vorlu::ctl
