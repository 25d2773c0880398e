#pragma once

#include <string_view>

#include "vorlu/state/key_reference.h"

namespace vorlu::reference {

/// A key's type as schemas and manifests name it; they differ in their word for a `section`.
std::string_view dataType(KeyType type, std::string_view section);

}  // namespace vorlu::reference
