#pragma once

#include <memory>
#include <mutex>

#include "vorlu/platform/security.h"

struct evp_pkey_st;

namespace vorlu {

/// Ciphers by OpenSSL. The last private key stays parsed, since a run opens many texts with the same one.
class LinuxSecurity : public Security {
 public:
  /// Codes of a failed AES operation.
  static constexpr int parameterError = -4300;  ///< a key or IV of a wrong length
  static constexpr int alignmentError = -4303;  ///< ciphertext that is no whole number of blocks
  static constexpr int decodeError = -4304;     ///< wrong padding

  LinuxSecurity();
  ~LinuxSecurity() override;

  Result<std::string> rsaDecrypt(std::string_view cipher, std::string_view privateKeyDer) override;
  Result<std::string> rsaEncrypt(std::string_view plain, std::string_view publicKeyDer) override;
  Status checkPublicKey(std::string_view publicKeyDer) override;
  Result<std::string> aesDecrypt(std::string_view data, std::string_view key, std::string_view iv) override;
  Result<std::string> aesEncrypt(std::string_view data, std::string_view key, std::string_view iv) override;
  std::string sha256(std::string_view data) override;
  Result<std::string> randomBytes(std::size_t count) override;

 private:
  std::shared_ptr<evp_pkey_st> privateKey(std::string_view der);

  std::mutex mutex_;
  std::string lastDer_;
  std::shared_ptr<evp_pkey_st> lastKey_;
};

}  // namespace vorlu
