#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlu {

/// Standard Base64 with padding, without line breaks.
std::string base64Encode(std::string_view bytes);
/// Nothing on any character outside the alphabet, white space included, or on a wrong length or padding.
std::optional<std::string> base64Decode(std::string_view text);

/// Two lower-case digits a byte.
std::string hexEncode(std::string_view bytes);
/// Nothing on an odd length or a character that is no hexadecimal digit; both letter cases are read.
std::optional<std::string> hexDecode(std::string_view text);

}  // namespace vorlu
