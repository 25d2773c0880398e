#pragma once

#include <string>
#include <vector>

#include "vorlu/state/key_reference.h"

namespace vorlu::reference {

/// JSON Schema (draft 7) of the preferences, with the words that an MDM's form for custom settings understands.
std::string preferencesSchema(const std::vector<KeyReference>& keys);
/// JSON Schema (draft 7) of a catalog: an array of entries.
std::string catalogSchema(const std::vector<KeyReference>& keys);

}  // namespace vorlu::reference
