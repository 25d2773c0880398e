#pragma once

#include <string>
#include <string_view>

namespace vorlu::seal {

/// 32 raw bytes; throws std::runtime_error when OpenSSL fails.
std::string sha256(std::string_view data);

}  // namespace vorlu::seal
