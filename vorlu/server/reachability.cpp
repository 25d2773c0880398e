#include "vorlu/server/reachability.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "vorlu/server/catalog_fetch.h"
#include "vorlu/server/key_material.h"
#include "vorlu/server/reply_body.h"
#include "vorlu/server/server_texts.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/record.h"
#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

struct ServerTimestamp {
  std::optional<std::int64_t> timestamp;  ///< of the last certificate change, seconds since 1970
  static constexpr auto fields() { return std::array{field<&ServerTimestamp::timestamp>("timestamp")}; }
};

int statusOf(const UrlReply& reply) {
  return reply.response && !reply.error ? reply.response->status : noStatusCode;
}

int probeCatalog(Vorlu& vorlu) {
  const CatalogEndpoint endpoint = catalogEndpoint(vorlu);
  return probeServer(vorlu, endpoint.url, endpoint.token);
}

/// A server that answers but refuses may have changed its tokens.
int probeWithFreshKeys(Vorlu& vorlu) {
  vorlu.log("The Vorlu server was not reachable on the first connection attempt");
  vorlu.log("Obtaining Vorlu certificates...");
  populateKeychain(vorlu, false);
  vorlu.platform.clock.sleep(seconds(1));
  return probeCatalog(vorlu);
}

void warnUnreachable(Vorlu& vorlu, int status) {
  if (status == noStatusCode) {
    vorlu.log("Warning: The Vorlu server is not reachable. Could not obtain HTTP status code");
  } else {
    vorlu.log(fmt::format("Warning: The Vorlu server is not reachable. Status Code: {}", status));
  }
}

void announceLocalCopy(Vorlu& vorlu, int status) {
  if (vorlu.platform.files.exists(paths::offlineData)) {
    vorlu.log("Offline Application data will be used");
    return;
  }
  vorlu.log("Error: No offline data was found for the update. Unable to continue");
  const std::string& contact = vorlu.site.supportContact();
  vorlu.log.logForJamf(
      status == noStatusCode
          ? fmt::format("Error: The Vorlu server is unreachable and no cached data was found. Unable to continue with "
                        "the update. Please contact {} for support",
                        contact)
          : fmt::format("Error: The Vorlu server is unreachable and no offline cached data was found. Unable to "
                        "continue with the update. Please contact {} for support",
                        contact));
}

/// A URL that no cache on the way has seen: the moment, with its fraction, goes into the query.
std::string uncachedUrl(std::string url, Seconds now) {
  url += url.find('?') == std::string::npos ? '?' : '&';
  return fmt::format("{}nocache={:.6f}", url, now);
}

constexpr ReplyTexts timestampTexts = {
    "Warning: No data was received from the server request whilst gathering Vorlu certificate information",
    "Warning: No response was received from the server request whilst gathering Vorlu certificate information",
    "Warning: An error was received from the server request whilst gathering Vorlu certificate information - {}"};

}  // namespace

int probeServer(Vorlu& vorlu, const std::string& url, const std::string& token) {
  UrlRequest request;
  request.url = replacedAll(url, " ", "%20");
  request.headers.push_back(authorizationHeader(vorlu, token));
  return statusOf(vorlu.platform.urls.send(request));
}

void checkServerReachable(Vorlu& vorlu) {
  int status = probeCatalog(vorlu);
  if (status != 200 && status != noStatusCode) status = probeWithFreshKeys(vorlu);
  if (status == 200) {
    vorlu.log("The Vorlu server is reachable", silent);
    return;
  }
  vorlu.catalog.offlineMode = true;
  warnUnreachable(vorlu, status);
  announceLocalCopy(vorlu, status);
}

bool checkInternetConnection(Vorlu& vorlu) {
  UrlRequest request;
  request.url = decryptString(vorlu, SiteText::connectivityURL);
  request.method = "HEAD";
  return statusOf(vorlu.platform.urls.send(request)) == 200;
}

std::optional<std::int64_t> fetchCertificateTimestamp(Vorlu& vorlu) {
  UrlRequest request;
  request.url = uncachedUrl(decryptString(vorlu, SiteText::timestampURL), vorlu.platform.clock.now());
  request.method = decryptString(vorlu, SiteText::requestMethod);
  request.ignoreCache = true;
  Result<std::string> body = replyBody(vorlu.platform.urls.send(request), timestampTexts);
  if (!body) {
    vorlu.log(body.error());
    return std::nullopt;
  }
  const Result<ServerTimestamp> answer = decodeJson<ServerTimestamp>(std::move(*body));
  if (!answer) {
    vorlu.log(fmt::format("Error: Certificate validation data decode failed  - {}", answer.error()));
    return std::nullopt;
  }
  if (!answer->timestamp) {
    vorlu.log("Warning: Could not obtain the last certificate modification date from the Vorlu server");
  }
  return answer->timestamp;
}

bool isRefreshDue(std::int64_t lastRefresh, std::int64_t lastChange) {
  return lastRefresh < lastChange;
}

CertificateRefresh refreshCertificates(Vorlu& vorlu) {
  std::int64_t timestamp = fetchCertificateTimestamp(vorlu).value_or(0);
  if (timestamp == 0) {
    vorlu.platform.clock.sleep(seconds(5));
    timestamp = fetchCertificateTimestamp(vorlu).value_or(0);
  }
  if (timestamp == 0) {
    vorlu.log("Warning: Could not obtain the last certificate modification timestamp from the Vorlu server");
  }
  if (!isRefreshDue(vorlu.runData.kept(&RunDataFile::SecretsTimestamp), timestamp))
    return CertificateRefresh::notNeeded;
  vorlu.log("Updating Vorlu certificates...");
  populateKeychain(vorlu, true);
  if (vorlu.keys.keychainWriteFailed) return CertificateRefresh::failed;
  updateRunData(vorlu, RunDataSelector::secretsTimestamp);
  return CertificateRefresh::done;
}

}  // namespace vorlu
