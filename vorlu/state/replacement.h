#pragma once

#include <string>
#include <string_view>

namespace vorlu {

/// `text` with every occurrence of `part`, which isn't empty, replaced by `by`. What was put in isn't searched again.
std::string replacedAll(std::string_view text, std::string_view part, std::string_view by);

}  // namespace vorlu
