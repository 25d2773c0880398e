#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vorlu {

struct Vorlu;

/// No HTTP status could be had.
inline constexpr int noStatusCode = 1990;

/// HTTP status of a GET with the token, or `noStatusCode`.
int probeServer(Vorlu& vorlu, const std::string& url, const std::string& token);
/// Tests the catalog's URL, once more with fresh key material when it answers but refuses. Sets `offlineMode` when the
/// server can't be used. May end the run through the key material.
void checkServerReachable(Vorlu& vorlu);
/// Whether the connectivity endpoint answers a HEAD request with 200.
bool checkInternetConnection(Vorlu& vorlu);

/// Time stamp of the last certificate change, seconds since 1970; nothing, with a logged warning, when it can't be had.
std::optional<std::int64_t> fetchCertificateTimestamp(Vorlu& vorlu);

/// Whether the key material was fetched before the server's certificates changed last; both seconds since 1970.
bool isRefreshDue(std::int64_t lastRefresh, std::int64_t lastChange);

enum class CertificateRefresh { notNeeded, done, failed };
/// Asks for the server's time stamp, twice with a pause of 5 seconds, and fetches the key material anew when it is
/// newer than `SecretsTimestamp`.
CertificateRefresh refreshCertificates(Vorlu& vorlu);

}  // namespace vorlu
