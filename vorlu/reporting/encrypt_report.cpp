#include "vorlu/reporting/encrypt_report.h"

#include <fmt/format.h>

#include "vorlu/server/encryption_utility.h"
#include "vorlu/state/encoding.h"

namespace vorlu {
namespace {

constexpr std::size_t keyBytes = 32;
constexpr std::size_t ivBytes = 16;

/// The key's DER.
Result<std::string> reportingKey(Security& security, const std::string& text) {
  std::optional<std::string> der = base64Decode(text);
  if (!der) return Failure{KeyConversionError::invalidBase64String};
  const Status usable = security.checkPublicKey(*der);
  if (!usable) return usable.failure();
  return std::move(*der);
}

Failure thrown(const std::string& error) {
  return {fmt::format("Error: Could not submit reporting data - {}", error)};
}

}  // namespace

Result<EncryptedJson> encryptReport(Security& security, Log& log, const std::string& report,
                                    const std::string& publicKey) {
  const Result<std::string> der = reportingKey(security, publicKey);
  if (!der) {
    return Failure{
        fmt::format("Error: Could not convert reporting key - {}. Please ensure the configued Vorlu public "
                    "key is valid",
                    der.error())};
  }
  EncryptionUtility crypto(security, log);
  const Result<std::string> key = crypto.randomBytes(keyBytes);
  if (!key) return Failure{"Error: Failed to generate AES key"};
  const Result<std::string> iv = crypto.randomBytes(ivBytes);
  if (!iv) return thrown(iv.error());
  const Result<std::string> data = crypto.aesEncrypt(report, *key, *iv);
  if (!data) return thrown(data.error());
  const Result<std::string> wrapped = crypto.rsaEncrypt(*key, *der);
  if (!wrapped) return thrown(wrapped.error());
  return EncryptedJson{hexEncode(*data), hexEncode(*iv), hexEncode(*wrapped)};
}

}  // namespace vorlu
