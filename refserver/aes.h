#pragma once

#include <string>
#include <string_view>

#include "vorlu/platform/result.h"

/// AES-256-CBC with PKCS#7 padding: 32 bytes of key, 16 of IV.
namespace vorlu::refserver {

/// Throws std::runtime_error when OpenSSL fails.
std::string aesEncrypt(std::string_view plain, std::string_view key, std::string_view iv);
/// Fails on a key or IV of another length and on a text that these don't open.
Result<std::string> aesDecrypt(std::string_view cipher, std::string_view key, std::string_view iv);

}  // namespace vorlu::refserver
