#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace vorlu::seal {

/// Texts that hide a value from a search of the program for keys: whoever reads the value removes them.
inline constexpr std::size_t decoyCount = 10;
inline constexpr std::size_t decoyLength = 216;  ///< Base64 of a public RSA key of 1024 bits
using Decoys = std::array<std::string, decoyCount>;

/// Ten new ones: Base64 of public keys whose private halves nobody keeps.
Decoys makeDecoys();

/// `text` with each of `decoys` once inside, at random places and never within one another.
std::string spliceDecoys(std::string_view text, const std::vector<std::string_view>& decoys);

}  // namespace vorlu::seal
