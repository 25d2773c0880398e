#pragma once

#include <string>

#include "seal/rsa_key.h"
#include "vorlu/platform/result.h"

namespace vorlu::refserver {

/// The parts of a report as an agent sends it, as raw bytes.
struct SealedReport {
  std::string data;        ///< the report under AES-256-CBC
  std::string iv;          ///< 16 bytes
  std::string wrappedKey;  ///< the AES key under RSA-OAEP with SHA-512
};

/// Reads `{"encrypted_data_hex", "iv_hex", "aes_key_encrypted_hex"}`. A failure says what is wrong with which of them.
Result<SealedReport> parseSealedReport(const std::string& body);

/// The report's JSON, pretty-printed. Fails on another owner's key and on damaged parts.
Result<std::string> openReport(const SealedReport& report, const seal::RsaKey& owner);

}  // namespace vorlu::refserver
