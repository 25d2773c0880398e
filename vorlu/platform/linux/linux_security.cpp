#include "vorlu/platform/linux/linux_security.h"

#include <fmt/format.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <climits>

#include "vorlu/platform/linux/sha256_digest.h"

namespace vorlu {
namespace {

using Key = std::shared_ptr<EVP_PKEY>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)>;

const unsigned char* bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* bytes(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

/// A failure with the library's newest reason; its queue is emptied.
Failure libraryFailure(std::string_view what) {
  const unsigned long error = ERR_peek_last_error();
  const char* reason = ERR_reason_error_string(error);
  ERR_clear_error();
  return {fmt::format("{}: {}", what, reason ? reason : "unknown cause")};
}

Key rsaOnly(EVP_PKEY* parsed) {
  Key key(parsed, &EVP_PKEY_free);
  return key && EVP_PKEY_is_a(parsed, "RSA") ? key : nullptr;
}

/// X.509's form or the bare PKCS#1 one.
Key publicKey(std::string_view der) {
  const unsigned char* at = bytes(der);
  if (Key key = rsaOnly(d2i_PUBKEY(nullptr, &at, static_cast<long>(der.size())))) return key;
  ERR_clear_error();
  at = bytes(der);
  return rsaOnly(d2i_PublicKey(EVP_PKEY_RSA, nullptr, &at, static_cast<long>(der.size())));
}

bool useOaepSha512(EVP_PKEY_CTX* context) {
  return EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) > 0 &&
         EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha512()) > 0 &&
         EVP_PKEY_CTX_set_rsa_mgf1_md(context, EVP_sha512()) > 0;
}

using RsaStart = int (*)(EVP_PKEY_CTX*);
using RsaStep = int (*)(EVP_PKEY_CTX*, unsigned char*, std::size_t*, const unsigned char*, std::size_t);

Result<std::string> rsa(const Key& key, std::string_view input, RsaStart start, RsaStep step, std::string_view what) {
  const KeyContext context(key ? EVP_PKEY_CTX_new(key.get(), nullptr) : nullptr, &EVP_PKEY_CTX_free);
  if (!context || start(context.get()) <= 0 || !useOaepSha512(context.get())) return libraryFailure(what);
  auto size = static_cast<std::size_t>(EVP_PKEY_get_size(key.get()));
  std::string output(size, '\0');
  if (step(context.get(), bytes(output), &size, bytes(input), input.size()) <= 0) return libraryFailure(what);
  output.resize(size);
  return output;
}

Result<std::string> aes(bool encrypt, std::string_view data, std::string_view key, std::string_view iv) {
  constexpr std::size_t keyBytes = 32;
  constexpr std::size_t blockBytes = 16;
  const auto failed = [](int code) { return Failure{fmt::format("AES failed with status {}", code), code}; };
  if (key.size() != keyBytes || iv.size() != blockBytes || data.size() > INT_MAX - blockBytes)
    return failed(LinuxSecurity::parameterError);
  if (!encrypt && data.size() % blockBytes != 0) return failed(LinuxSecurity::alignmentError);
  const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                &EVP_CIPHER_CTX_free);
  std::string output(data.size() + blockBytes, '\0');
  int first = 0;
  int last = 0;
  if (!context ||
      EVP_CipherInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, bytes(key), bytes(iv), encrypt ? 1 : 0) != 1 ||
      EVP_CipherUpdate(context.get(), bytes(output), &first, bytes(data), static_cast<int>(data.size())) != 1 ||
      EVP_CipherFinal_ex(context.get(), bytes(output) + first, &last) != 1) {
    ERR_clear_error();
    return failed(LinuxSecurity::decodeError);
  }
  output.resize(static_cast<std::size_t>(first) + static_cast<std::size_t>(last));
  return output;
}

}  // namespace

LinuxSecurity::LinuxSecurity() = default;

LinuxSecurity::~LinuxSecurity() {
  OPENSSL_cleanse(lastDer_.data(), lastDer_.size());
}

std::shared_ptr<evp_pkey_st> LinuxSecurity::privateKey(std::string_view der) {
  const std::scoped_lock lock(mutex_);
  if (lastKey_ && lastDer_ == der) return lastKey_;
  const unsigned char* at = bytes(der);  // asked for RSA alone, the library doesn't try all the kinds that it knows
  Key key = rsaOnly(d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &at, static_cast<long>(der.size())));
  if (!key) return nullptr;
  OPENSSL_cleanse(lastDer_.data(), lastDer_.size());
  lastDer_ = der;
  return lastKey_ = key;
}

Result<std::string> LinuxSecurity::rsaDecrypt(std::string_view cipher, std::string_view privateKeyDer) {
  return rsa(privateKey(privateKeyDer), cipher, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, "Decryption failed");
}

Result<std::string> LinuxSecurity::rsaEncrypt(std::string_view plain, std::string_view publicKeyDer) {
  return rsa(publicKey(publicKeyDer), plain, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, "Encryption failed");
}

Status LinuxSecurity::checkPublicKey(std::string_view publicKeyDer) {
  if (publicKey(publicKeyDer)) return success();
  ERR_clear_error();
  return Failure{"the data are no public RSA key"};
}

Result<std::string> LinuxSecurity::aesDecrypt(std::string_view data, std::string_view key, std::string_view iv) {
  return aes(false, data, key, iv);
}

Result<std::string> LinuxSecurity::aesEncrypt(std::string_view data, std::string_view key, std::string_view iv) {
  return aes(true, data, key, iv);
}

std::string LinuxSecurity::sha256(std::string_view data) {
  Sha256Digest digest;
  digest.update(data);
  return digest.finish();
}

Result<std::string> LinuxSecurity::randomBytes(std::size_t count) {
  std::string random(count, '\0');
  if (count > INT_MAX || RAND_bytes(bytes(random), static_cast<int>(count)) != 1) return libraryFailure("Random bytes");
  return random;
}

}  // namespace vorlu
