#include "seal/random.h"

#include <openssl/rand.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <stdexcept>

namespace vorlu::seal {

namespace {

/// Lets the standard distributions draw from the key generator.
struct Generator {
  using result_type = std::uint64_t;
  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return UINT64_MAX; }
  result_type operator()() {
    result_type value = 0;
    std::memcpy(&value, randomBytes(sizeof value).data(), sizeof value);
    return value;
  }
};

}  // namespace

std::string randomBytes(std::size_t count) {
  std::string bytes(count, '\0');
  if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(count)) != 1) {
    throw std::runtime_error("the system gave no random bytes");
  }
  return bytes;
}

std::size_t randomBelow(std::size_t limit) {
  Generator generator;
  return std::uniform_int_distribution<std::size_t>(0, limit - 1)(generator);
}

}  // namespace vorlu::seal
