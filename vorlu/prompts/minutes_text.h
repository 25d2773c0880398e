#pragma once

#include <cstdint>
#include <string>

namespace vorlu {

/// Minutes in words: "15 minutes", "1 hour and 1 minute", "2 hours".
std::string formatMinutes(std::int64_t minutes);

}  // namespace vorlu
