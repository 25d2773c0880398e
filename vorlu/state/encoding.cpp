#include "vorlu/state/encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vorlu {

namespace {

constexpr std::string_view base64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view hexDigits = "0123456789abcdef";
constexpr std::uint8_t noValue = 0xff;

using Values = std::array<std::uint8_t, 256>;

constexpr Values valuesOf(std::string_view alphabet) {
  Values values{};
  values.fill(noValue);
  for (std::size_t i = 0; i < alphabet.size(); ++i) {
    values[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}

constexpr Values hexValues() {
  Values values = valuesOf(hexDigits);
  for (char digit = 'A'; digit <= 'F'; ++digit) {
    values[static_cast<std::uint8_t>(digit)] = static_cast<std::uint8_t>(digit - 'A' + 10);
  }
  return values;
}

std::uint32_t byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<std::uint8_t>(bytes[index]);
}

}  // namespace

std::string base64Encode(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = byteAt(bytes, i) << 16;
    if (count > 1) group |= byteAt(bytes, i + 1) << 8;
    if (count > 2) group |= byteAt(bytes, i + 2);
    text += base64Alphabet[group >> 18];
    text += base64Alphabet[group >> 12 & 63];
    text += count > 1 ? base64Alphabet[group >> 6 & 63] : '=';
    text += count > 2 ? base64Alphabet[group & 63] : '=';
  }
  return text;
}

std::optional<std::string> base64Decode(std::string_view text) {
  static constexpr Values values = valuesOf(base64Alphabet);
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  while (padding < 2 && text.ends_with('=')) {
    text.remove_suffix(1);
    ++padding;
  }
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 2);
  std::uint32_t group = 0;
  std::size_t taken = 0;
  for (const char character : text) {
    const std::uint8_t value = values[static_cast<std::uint8_t>(character)];
    if (value == noValue) return std::nullopt;
    group = group << 6 | value;
    if (++taken % 4 != 0) continue;
    bytes += static_cast<char>(group >> 16);
    bytes += static_cast<char>(group >> 8);
    bytes += static_cast<char>(group);
    group = 0;
  }
  // One character of padding stands for a missing byte: 18 bits give two bytes, 12 bits one.
  if (padding == 1) {
    bytes += static_cast<char>(group >> 10);
    bytes += static_cast<char>(group >> 2);
  } else if (padding == 2) {
    bytes += static_cast<char>(group >> 4);
  }
  return bytes;
}

std::string hexEncode(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text += hexDigits[byteAt(bytes, i) >> 4];
    text += hexDigits[byteAt(bytes, i) & 15];
  }
  return text;
}

std::optional<std::string> hexDecode(std::string_view text) {
  static constexpr Values values = hexValues();
  if (text.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const std::uint8_t high = values[byteAt(text, i)];
    const std::uint8_t low = values[byteAt(text, i + 1)];
    if (high == noValue || low == noValue) return std::nullopt;
    bytes += static_cast<char>(high << 4 | low);
  }
  return bytes;
}

}  // namespace vorlu
