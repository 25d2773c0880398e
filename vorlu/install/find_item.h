#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Path below `root` of the first file, application or directory that is `item`, or that the pattern behind "REGEX:"
/// matches anywhere; empty when there is none. Insides of packages aren't looked at.
std::string findItem(Vorlu& vorlu, const std::string& root, const std::string& item);

}  // namespace vorlu
