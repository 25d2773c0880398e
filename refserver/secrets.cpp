#include "refserver/secrets.h"

#include "refserver/aes.h"
#include "seal/random.h"
#include "vorlu/state/encoding.h"

namespace vorlu::refserver {

SealedInventory sealInventory(const std::string& document, const seal::RsaKey& agent) {
  const std::string key = seal::randomBytes(32);
  const std::string iv = seal::randomBytes(16);
  return {base64Encode(aesEncrypt(document, key, iv)), base64Encode(agent.encrypt(key)), base64Encode(iv)};
}

}  // namespace vorlu::refserver
