#pragma once

#include <string_view>

namespace vorlu {

/// Whether a property list can be given to the parser, which calls itself for each level of nesting and copies an
/// object at each reference to it: a small file made for the purpose would exhaust stack or memory. False as well for a
/// binary list whose tables leave the file.
bool isBoundedPropertyList(std::string_view bytes);

}  // namespace vorlu
