#include "vorlu/server/encryption_utility.h"

#include <fmt/format.h>

#include <optional>

#include "vorlu/state/encoding.h"
#include "vorlu/state/log.h"
#include "vorlu/state/replacement.h"

namespace vorlu {
namespace {

Failure cipherFailure(std::string_view domain, int code, std::string_view description) {
  return {fmt::format("Error Domain={} Code={} \"{}\"", domain, code, description), code};
}

}  // namespace

Result<std::string> EncryptionUtility::rsaEncrypt(std::string_view plain, std::string_view publicKey) {
  Result<std::string> cipher = security_.rsaEncrypt(plain, publicKey);
  if (!cipher) return cipherFailure("EncryptionError", cipher.failure().code, "Encryption failed");
  return cipher;
}

Result<std::string> EncryptionUtility::rsaDecrypt(std::string_view cipher, std::string_view privateKey) {
  Result<std::string> plain = security_.rsaDecrypt(cipher, privateKey);
  if (!plain) return cipherFailure("DecryptionError", plain.failure().code, "Decryption failed");
  return plain;
}

Result<std::string> EncryptionUtility::aesEncrypt(std::string_view data, std::string_view key, std::string_view iv) {
  return checkedAes(security_.aesEncrypt(data, key, iv));
}

Result<std::string> EncryptionUtility::aesDecrypt(std::string_view data, std::string_view key, std::string_view iv) {
  return checkedAes(security_.aesDecrypt(data, key, iv));
}

Result<std::string> EncryptionUtility::checkedAes(Result<std::string> outcome) {
  if (outcome) return outcome;
  const int status = outcome.failure().code;
  log_(fmt::format("Error in AES operation: {}", status));
  return cipherFailure("CryptoError", status, fmt::format("aesError({})", status));
}

Result<std::string> EncryptionUtility::base64Decode(std::string_view text) {
  const std::string plain = replacedAll(text, "\\/", "/");
  std::optional<std::string> bytes = vorlu::base64Decode(plain);
  if (bytes) return std::move(*bytes);
  log_(fmt::format("Error: Failed to decode Base64 string ({})", plain));
  return Failure{KeyConversionError::invalidBase64String};
}

Result<std::string> EncryptionUtility::hexDecode(std::string_view text) {
  std::optional<std::string> bytes = vorlu::hexDecode(text);
  if (!bytes) return Failure{KeyConversionError::invalidHexString};
  return std::move(*bytes);
}

}  // namespace vorlu
