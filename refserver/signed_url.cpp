#include "refserver/signed_url.h"

#include <fmt/format.h>
#include <openssl/crypto.h>

#include <charconv>
#include <cmath>
#include <optional>

#include "seal/sha256.h"
#include "vorlu/state/encoding.h"

namespace vorlu::refserver {

namespace {

struct SignedQuery {
  std::string_view signature;
  std::int64_t expiry = 0;
};

std::optional<SignedQuery> parse(std::string_view query, const QueryPrefixes& prefixes) {
  std::string_view signaturePrefix = prefixes.signature;
  if (signaturePrefix.starts_with('?')) signaturePrefix.remove_prefix(1);
  if (!query.starts_with(signaturePrefix)) return std::nullopt;
  query.remove_prefix(signaturePrefix.size());
  const auto separator = query.find(prefixes.expiry);
  if (separator == std::string_view::npos) return std::nullopt;

  SignedQuery parsed{query.substr(0, separator)};
  const std::string_view digits = query.substr(separator + prefixes.expiry.size());
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, parsed.expiry);
  if (error != std::errc() || stop != end) return std::nullopt;
  return parsed;
}

bool equalInConstantTime(std::string_view a, std::string_view b) {
  return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace

std::string signatureOf(std::string_view secret, std::string_view path, std::int64_t expiry) {
  std::string signature = base64Encode(seal::sha256(fmt::format("{}{}{}", secret, path, expiry)));
  for (char& character : signature) {
    if (character == '+') character = '-';
    if (character == '/') character = '_';
  }
  signature.erase(signature.find_last_not_of('=') + 1);
  return signature;
}

SignatureVerdict checkSignedQuery(std::string_view query, const QueryPrefixes& prefixes, std::string_view secret,
                                  std::string_view path, double now) {
  const auto parsed = parse(query, prefixes);
  if (!parsed) return SignatureVerdict::malformed;
  if (!equalInConstantTime(parsed->signature, signatureOf(secret, path, parsed->expiry))) {
    return SignatureVerdict::forged;
  }
  const auto second = static_cast<std::int64_t>(std::floor(now));
  if (parsed->expiry < second) return SignatureVerdict::expired;
  if (parsed->expiry > second + signedURLSeconds + clockSkewSeconds) return SignatureVerdict::tooFarAhead;
  return SignatureVerdict::valid;
}

std::string_view describe(SignatureVerdict verdict) {
  switch (verdict) {
    case SignatureVerdict::valid:
      return "the signature is valid";
    case SignatureVerdict::malformed:
      return "this URL must be signed";
    case SignatureVerdict::forged:
      return "the signature is wrong";
    case SignatureVerdict::expired:
      return "the signed URL has expired";
    case SignatureVerdict::tooFarAhead:
      return "the signed URL expires too far ahead; is the computer's clock right?";
  }
  return "";
}

}  // namespace vorlu::refserver
