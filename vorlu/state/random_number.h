#pragma once

#include <cstdint>

namespace vorlu {

class Security;

/// A number from 0 to `bound` - 1; 0 when no random bytes can be had.
std::int64_t randomBelow(Security& security, std::uint32_t bound);

}  // namespace vorlu
