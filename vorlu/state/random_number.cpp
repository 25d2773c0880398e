#include "vorlu/state/random_number.h"

#include "vorlu/platform/security.h"

namespace vorlu {

std::int64_t randomBelow(Security& security, std::uint32_t bound) {
  std::uint32_t number = 0;
  if (const auto bytes = security.randomBytes(sizeof number)) {
    for (const char byte : *bytes) number = (number << 8) | static_cast<unsigned char>(byte);
  }
  return number % bound;
}

}  // namespace vorlu
