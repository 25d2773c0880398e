#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vorlu/state/key_note.h"

namespace vorlu {

enum class KeyType { text, integer, boolean, textList, section };
/// "text", "integer", "boolean", "list of text", "section".
std::string_view nameOf(KeyType type);

/// All that is known of one key of the preferences or the catalog.
struct KeyReference {
  std::string path;  ///< "ScheduledUpdates.runFrequency.patchDay"; of the catalog the key alone
  KeyType type;
  std::optional<std::string> defaultText;  ///< value that is used without the key: "true", "15", a text; none: nothing
  KeyNote note;

  /// The last part of the path.
  std::string_view key() const;
  /// The path without its last part, empty for a top-level key.
  std::string_view section() const;
};

/// The choice that `value` stands for, in the choice's own spelling; nothing for none.
std::optional<std::string_view> choiceFor(const KeyNote& note, std::string_view value);

/// Every key of the preferences in the order of its records, a section before what stands in it.
std::vector<KeyReference> preferenceKeys();

}  // namespace vorlu
