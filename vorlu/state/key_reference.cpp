#include "vorlu/state/key_reference.h"

#include <strings.h>

#include <algorithm>

#include "vorlu/state/preferences.h"

namespace vorlu {
namespace {

template <class V>
struct Stored {
  using Type = V;
};
template <class V>
struct Stored<std::optional<V>> {
  using Type = V;
};

KeyType typeOf(const std::string&) {
  return KeyType::text;
}
KeyType typeOf(std::int64_t) {
  return KeyType::integer;
}
KeyType typeOf(bool) {
  return KeyType::boolean;
}
KeyType typeOf(const TextList&) {
  return KeyType::textList;
}

std::string textOf(const std::string& value) {
  return value;
}
std::string textOf(std::int64_t value) {
  return std::to_string(value);
}
std::string textOf(bool value) {
  return value ? "true" : "false";
}

/// The default of a member that always has a value; an optional one leaves it to the note.
template <class V>
std::optional<std::string> defaultOf(const V& initial, const KeyNote& note) {
  if constexpr (!detail::isOptional<V>) return textOf(initial);
  return note.ifAbsent.empty() ? std::nullopt : std::optional<std::string>(note.ifAbsent);
}

/// In the spelling of its choice.
std::optional<std::string> asChoice(std::optional<std::string> value, const KeyNote& note) {
  const auto choice = value ? choiceFor(note, *value) : std::nullopt;
  return choice ? std::string(*choice) : value;
}

template <NotedRecord T>
void addKeys(const std::string& section, std::vector<KeyReference>& keys);

template <auto Member>
void addKey(const std::string& section, const NotedField<Member>& noted, std::vector<KeyReference>& keys) {
  using T = detail::ClassOf<Member>;
  static const T initial{};
  using Value = std::remove_cvref_t<decltype(initial.*Member)>;
  using Plain = typename Stored<Value>::Type;
  std::string path = section + std::string(noted.key);
  if constexpr (NotedRecord<Plain>) {
    keys.push_back({path, KeyType::section, std::nullopt, noted.note});
    addKeys<Plain>(path + ".", keys);
  } else {
    keys.push_back(
        {std::move(path), typeOf(Plain{}), asChoice(defaultOf(initial.*Member, noted.note), noted.note), noted.note});
  }
}

template <NotedRecord T>
void addKeys(const std::string& section, std::vector<KeyReference>& keys) {
  std::apply([&](const auto&... noted) { (addKey(section, noted, keys), ...); }, T::keys());
}

}  // namespace

std::optional<std::string_view> choiceFor(const KeyNote& note, std::string_view value) {
  const auto stands = [&](std::string_view choice) {
    return choice == value || (note.choicesInAnyCase && choice.size() == value.size() &&
                               strncasecmp(choice.data(), value.data(), value.size()) == 0);
  };
  const auto* found = std::find_if(note.choices.begin(), note.choices.end(), stands);
  return found == note.choices.end() ? std::nullopt : std::optional(*found);
}

std::string_view nameOf(KeyType type) {
  switch (type) {
    case KeyType::text:
      return "text";
    case KeyType::integer:
      return "integer";
    case KeyType::boolean:
      return "boolean";
    case KeyType::textList:
      return "list of text";
    case KeyType::section:
      return "section";
  }
  return {};
}

std::string_view KeyReference::key() const {
  const std::size_t dot = path.rfind('.');
  return dot == std::string::npos ? std::string_view(path) : std::string_view(path).substr(dot + 1);
}

std::string_view KeyReference::section() const {
  const std::size_t dot = path.rfind('.');
  return dot == std::string::npos ? std::string_view() : std::string_view(path).substr(0, dot);
}

std::vector<KeyReference> preferenceKeys() {
  std::vector<KeyReference> keys;
  addKeys<CustomPrefs>("", keys);
  return keys;
}

}  // namespace vorlu
