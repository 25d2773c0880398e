#pragma once

#include <cstddef>
#include <string>

namespace vorlu::seal {

/// Bytes fit for keys; throws std::runtime_error when the system has no randomness to give.
std::string randomBytes(std::size_t count);
/// An even choice from 0 to `limit` - 1.
std::size_t randomBelow(std::size_t limit);

}  // namespace vorlu::seal
