#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vorlu/state/key_reference.h"

namespace vorlu::reference {

/// A Markdown table for each section with its heading. A section whose keys another one has had refers to that.
std::string sectionTables(const std::vector<KeyReference>& keys);
/// One Markdown table of all keys.
std::string keyTable(const std::vector<KeyReference>& keys);

/// The page with `tables` below its mark, in place of those that stood there; a page without a mark gets one.
std::string withKeys(std::string_view page, std::string_view tables);

}  // namespace vorlu::reference
