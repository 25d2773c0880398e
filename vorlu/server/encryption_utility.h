#pragma once

#include <string>
#include <string_view>

#include "vorlu/platform/security.h"

namespace vorlu {

class Log;

/// Why a text is no key material.
struct KeyConversionError {
  static constexpr const char* invalidBase64String = "invalidBase64String";
  static constexpr const char* invalidHexString = "invalidHexString";
};

/// The ciphers of key material and report: the platform's operations with the errors that messages quote.
class EncryptionUtility {
 public:
  EncryptionUtility(Security& security, Log& log) : security_(security), log_(log) {}

  /// RSA-OAEP with SHA-512. The failure is one of domain "EncryptionError" or "DecryptionError".
  Result<std::string> rsaEncrypt(std::string_view plain, std::string_view publicKey);
  Result<std::string> rsaDecrypt(std::string_view cipher, std::string_view privateKey);
  /// AES-256-CBC with PKCS#7 padding. A failure is logged with the cipher's status and is one of domain "CryptoError".
  Result<std::string> aesEncrypt(std::string_view data, std::string_view key, std::string_view iv);
  Result<std::string> aesDecrypt(std::string_view data, std::string_view key, std::string_view iv);
  Result<std::string> randomBytes(std::size_t count) { return security_.randomBytes(count); }

  /// Base64 whose slashes may still be escaped as in JSON; `invalidBase64String`, logged with the text, when it is
  /// none.
  Result<std::string> base64Decode(std::string_view text);
  /// `invalidHexString` when it is no text of hexadecimal pairs.
  static Result<std::string> hexDecode(std::string_view text);

 private:
  Result<std::string> checkedAes(Result<std::string> outcome);

  Security& security_;
  Log& log_;
};

}  // namespace vorlu
