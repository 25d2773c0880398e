#pragma once

#include <string>

#include "seal/keys.h"

namespace vorlu::refserver {

/// The key material as it is sent: three Base64 texts.
struct SealedInventory {
  std::string data;       ///< AES-256-CBC block of the inventory
  std::string signature;  ///< the AES key, wrapped with RSA-OAEP-SHA512 to the agents' key
  std::string sec;        ///< the IV
};

/// Enciphers an inventory document under a fresh AES key and IV; throws std::runtime_error when OpenSSL fails.
SealedInventory sealInventory(const std::string& document, const seal::RsaKey& agent);

}  // namespace vorlu::refserver
