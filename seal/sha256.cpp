#include "seal/sha256.h"

#include <openssl/evp.h>

#include <stdexcept>

namespace vorlu::seal {

std::string sha256(std::string_view data) {
  std::string digest(32, '\0');
  if (EVP_Digest(data.data(), data.size(), reinterpret_cast<unsigned char*>(digest.data()), nullptr, EVP_sha256(),
                 nullptr) != 1) {
    throw std::runtime_error("SHA-256 failed");
  }
  return digest;
}

}  // namespace vorlu::seal
