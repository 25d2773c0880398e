#pragma once

#include <string>

#include "vorlu/platform/security.h"
#include "vorlu/state/log.h"
#include "vorlu/state/record.h"

namespace vorlu {

/// A report as it is sent: lower-case hexadecimal texts. Only the holder of the private key can open it.
struct EncryptedJson {
  std::string encrypted_data_hex;     ///< AES-256-CBC of the report with PKCS#7 padding
  std::string iv_hex;                 ///< 16 bytes
  std::string aes_key_encrypted_hex;  ///< the AES key, wrapped with RSA-OAEP and SHA-512
  static constexpr auto fields() {
    using E = EncryptedJson;
    return std::array{requiredField<&E::encrypted_data_hex>("encrypted_data_hex"), requiredField<&E::iv_hex>("iv_hex"),
                      requiredField<&E::aes_key_encrypted_hex>("aes_key_encrypted_hex")};
  }
};

/// Enciphers a report under a fresh AES key and IV. `publicKey` is the Base64 of an RSA key's DER. A failure's text is
/// the log line that tells it.
Result<EncryptedJson> encryptReport(Security& security, Log& log, const std::string& report,
                                    const std::string& publicKey);

}  // namespace vorlu
