#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vorlu/server/blueprint.h"

namespace vorlu {

/// The working copy of the selected catalog entry: its fields with defaults applied and placeholders expanded, and what
/// was found of it on this computer. A search without a match leaves it as it was.
struct CurrentApp {  // NOLINT(clang-analyzer-optin.performance.Padding): the order is the catalog's
#define BLUEPRINT_TEXT(name, ifAbsent, ...) std::string name = ifAbsent;
#define BLUEPRINT_BOOL(name, ifAbsent, ...) bool name = ifAbsent;
#define BLUEPRINT_INT(name, ifAbsent, ...) std::int64_t name = ifAbsent;
#define BLUEPRINT_LIST(name, ...) std::vector<std::string> name;
#include "vorlu/server/blueprint_fields.def"

  std::string installedPath;              ///< first existing location, empty if none
  std::string installedName;              ///< its last component without ".app"
  std::string installedBundleIdentifier;  ///< of an "appBundle", "Unknown" when it can't be read
  bool legacyIdentifierUsed = false;      ///< some search of this process used another key than the identifier
  std::string progressTitle;

  /// Takes over every field of `entry` with the default for an absent one. Placeholders stay as they are.
  void copyFields(const AppBlueprints& entry) {
#define BLUEPRINT_TEXT(name, ifAbsent, ...) name = entry.name.value_or(ifAbsent);
#define BLUEPRINT_BOOL(name, ifAbsent, ...) name = entry.name.value_or(ifAbsent);
#define BLUEPRINT_INT(name, ifAbsent, ...) name = entry.name.value_or(ifAbsent);
#define BLUEPRINT_LIST(name, ...) name = entry.name.value_or(std::vector<std::string>{});
#include "vorlu/server/blueprint_fields.def"
  }
};

}  // namespace vorlu
