#pragma once

#include <string_view>

namespace vorlu {

inline constexpr std::string_view agentVersion = "1.4.0";

}  // namespace vorlu
