#pragma once

#include <string>
#include <string_view>

#include "vorlu/platform/result.h"

namespace vorlu {

/// Ciphers and digests. Stands for SecKey*, SecRandomCopyBytes, CCCrypt and CC_SHA256. All texts are raw bytes.
class Security {
 public:
  virtual ~Security() = default;

  /// RSA-OAEP with SHA-512 for digest and mask. Keys are DER: PKCS#1 or PKCS#8 private, PKCS#1 or X.509 public.
  virtual Result<std::string> rsaDecrypt(std::string_view cipher, std::string_view privateKeyDer) = 0;
  virtual Result<std::string> rsaEncrypt(std::string_view plain, std::string_view publicKeyDer) = 0;
  /// SecKeyCreateWithData: whether the bytes are a public RSA key, of any size.
  virtual Status checkPublicKey(std::string_view publicKeyDer) = 0;
  /// AES-256-CBC with PKCS#7 padding: 32 bytes of key, 16 of IV. A failure's code is the cipher's status.
  virtual Result<std::string> aesDecrypt(std::string_view data, std::string_view key, std::string_view iv) = 0;
  virtual Result<std::string> aesEncrypt(std::string_view data, std::string_view key, std::string_view iv) = 0;
  /// 32 raw bytes.
  virtual std::string sha256(std::string_view data) = 0;
  virtual Result<std::string> randomBytes(std::size_t count) = 0;
};

}  // namespace vorlu
