#pragma once

#include <string_view>

namespace vorlu {

/// Whether a property list can be given to the parser. It calls itself for each level of nesting and copies an object
/// at each reference to it, so that a small file made for the purpose would exhaust stack or memory (a large one does
/// by itself: 16 MiB are the most); it ends the program at a key of a binary list that holds a zero; and of a key that
/// a binary list has twice some readers get the first value and some the last. False as well for a binary list whose
/// tables leave the file.
bool isSafePropertyList(std::string_view bytes);

}  // namespace vorlu
