#include "refserver/secrets.h"

#include <openssl/evp.h>

#include <memory>
#include <stdexcept>

#include "seal/random.h"
#include "vorlu/state/encoding.h"

namespace vorlu::refserver {

namespace {

constexpr std::size_t keyBytes = 32;
constexpr std::size_t blockBytes = 16;

struct FreeCipher {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};

const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

/// AES-256-CBC with PKCS#7 padding.
std::string aesEncrypt(const std::string& plain, const std::string& key, const std::string& iv) {
  const std::unique_ptr<EVP_CIPHER_CTX, FreeCipher> context(EVP_CIPHER_CTX_new());
  std::string cipher(plain.size() + blockBytes, '\0');
  auto* out = reinterpret_cast<unsigned char*>(cipher.data());
  int body = 0;
  int tail = 0;
  const bool done = context &&
                    EVP_EncryptInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, bytesOf(key), bytesOf(iv)) == 1 &&
                    EVP_EncryptUpdate(context.get(), out, &body, bytesOf(plain), static_cast<int>(plain.size())) == 1 &&
                    EVP_EncryptFinal_ex(context.get(), out + body, &tail) == 1;
  if (!done) throw std::runtime_error("AES encryption of the inventory failed");
  cipher.resize(static_cast<std::size_t>(body) + static_cast<std::size_t>(tail));
  return cipher;
}

}  // namespace

SealedInventory sealInventory(const std::string& document, const seal::RsaKey& agent) {
  const std::string key = seal::randomBytes(keyBytes);
  const std::string iv = seal::randomBytes(blockBytes);
  return {base64Encode(aesEncrypt(document, key, iv)), base64Encode(agent.encrypt(key)), base64Encode(iv)};
}

}  // namespace vorlu::refserver
