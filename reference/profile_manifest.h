#pragma once

#include <string>
#include <vector>

#include "vorlu/state/key_reference.h"

namespace vorlu::reference {

/// A manifest of the preferences for profile editors, as a property list.
std::string profileManifest(const std::vector<KeyReference>& keys);

}  // namespace vorlu::reference
