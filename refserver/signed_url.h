#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlu::refserver {

/// A signed URL is good for 20 seconds; an agent whose clock runs ahead may be off by 5 more.
inline constexpr std::int64_t signedURLSeconds = 20;
inline constexpr std::int64_t clockSkewSeconds = 5;

enum class SignatureVerdict { valid, malformed, forged, expired, tooFarAhead };

/// URL-safe Base64 without padding of the SHA-256 over secret, path and the decimal expiry.
std::string signatureOf(std::string_view secret, std::string_view path, std::int64_t expiry);

/// What stands before the two values in the query of a signed URL.
struct QueryPrefixes {
  std::string signature;  ///< with the leading "?"
  std::string expiry;
};

/// Judges a query as sent, without its "?"; `now` in seconds since the epoch. The last second counts.
SignatureVerdict checkSignedQuery(std::string_view query, const QueryPrefixes& prefixes, std::string_view secret,
                                  std::string_view path, double now);

/// The verdict in words, for the client.
std::string_view describe(SignatureVerdict verdict);

}  // namespace vorlu::refserver
