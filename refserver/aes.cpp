#include "refserver/aes.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <memory>
#include <optional>
#include <stdexcept>

namespace vorlu::refserver {

namespace {

constexpr std::size_t keyBytes = 32;
constexpr std::size_t blockBytes = 16;

struct FreeCipher {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};

const unsigned char* bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

std::optional<std::string> aes(bool encrypt, std::string_view input, std::string_view key, std::string_view iv) {
  if (key.size() != keyBytes || iv.size() != blockBytes) return std::nullopt;
  const std::unique_ptr<EVP_CIPHER_CTX, FreeCipher> context(EVP_CIPHER_CTX_new());
  std::string output(input.size() + blockBytes, '\0');
  auto* out = reinterpret_cast<unsigned char*>(output.data());
  int body = 0;
  int tail = 0;
  const bool done =
      context &&
      EVP_CipherInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, bytesOf(key), bytesOf(iv), encrypt ? 1 : 0) == 1 &&
      EVP_CipherUpdate(context.get(), out, &body, bytesOf(input), static_cast<int>(input.size())) == 1 &&
      EVP_CipherFinal_ex(context.get(), out + body, &tail) == 1;
  ERR_clear_error();
  if (!done) return std::nullopt;
  output.resize(static_cast<std::size_t>(body) + static_cast<std::size_t>(tail));
  return output;
}

}  // namespace

std::string aesEncrypt(std::string_view plain, std::string_view key, std::string_view iv) {
  std::optional<std::string> cipher = aes(true, plain, key, iv);
  if (!cipher) throw std::runtime_error("AES encryption failed");
  return std::move(*cipher);
}

Result<std::string> aesDecrypt(std::string_view cipher, std::string_view key, std::string_view iv) {
  std::optional<std::string> plain = aes(false, cipher, key, iv);
  if (!plain) return Failure{"AES decryption failed"};
  return std::move(*plain);
}

}  // namespace vorlu::refserver
