#pragma once

#include <vector>

#include "vorlu/state/key_reference.h"

namespace vorlu {

/// Every key of a catalog entry, in the order in which entries are written.
std::vector<KeyReference> blueprintKeys();

}  // namespace vorlu
