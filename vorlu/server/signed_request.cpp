#include "vorlu/server/signed_request.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "vorlu/server/key_material.h"
#include "vorlu/server/reply_body.h"
#include "vorlu/server/server_texts.h"
#include "vorlu/state/encoding.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/json.h"
#include "vorlu/state/record.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// How long a signed URL is good, seconds: the computer's clock must be right.
constexpr std::int64_t urlLifetime = 20;

/// The server's answer to the call for key material.
struct SecDownloadData {
  std::optional<std::string> data;
  std::optional<std::string> signature;
  std::optional<std::string> sec;
  static constexpr auto fields() {
    return std::array{field<&SecDownloadData::data>("data"), field<&SecDownloadData::signature>("signature"),
                      field<&SecDownloadData::sec>("sec")};
  }
};

/// Base64 with the alphabet that needs no escape in a URL, without padding.
std::string urlSafeBase64(std::string_view bytes) {
  std::string text = base64Encode(bytes);
  std::replace(text.begin(), text.end(), '+', '-');
  std::replace(text.begin(), text.end(), '/', '_');
  std::erase(text, '=');
  return text;
}

bool isScheme(std::string_view text) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  return !text.empty() && isLetter(text[0]) && std::all_of(text.begin(), text.end(), [&](char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
  });
}

/// Scheme, host with port, and path of an absolute URL; nothing for any other text.
std::optional<ServerUrl> parsedUrl(std::string_view url) {
  const bool blank = std::any_of(url.begin(), url.end(), [](char c) { return c >= 0 && (c <= ' ' || c == 0x7f); });
  const std::size_t schemeEnd = url.find("://");
  if (blank || schemeEnd == std::string_view::npos || !isScheme(url.substr(0, schemeEnd))) return std::nullopt;
  const std::string_view rest = url.substr(schemeEnd + 3);
  const std::size_t hostEnd = std::min(rest.find_first_of("/?#"), rest.size());
  std::string_view host = rest.substr(0, hostEnd);
  host.remove_prefix(host.rfind('@') + 1);  // credentials, if any
  if (host.empty() || host[0] == ':') return std::nullopt;
  const std::string_view path = rest.substr(hostEnd, rest.find_first_of("?#", hostEnd) - hostEnd);
  return ServerUrl{fmt::format("{}://{}", url.substr(0, schemeEnd), host), std::string(path)};
}

constexpr ReplyTexts secretsTexts = {
    "Warning: No data was received from the server whilst attempting to gather Vorlu server data.",
    "Warning: No response was received from the server whilst attempting to gather Vorlu server data.",
    "Warning: An error was received from the server whilst attempting to gather Vorlu server data - {}."};

constexpr ReplyTexts manifestTexts = {
    "Error: No data was received from the server whilst attempting to gather Vorlu components data",
    "Error: No response was received from the server whilst attempting to gather Vorlu components data",
    "Error: An error was received from the server whilst attempting to gather Vorlu components data - {}"};

/// The answer to a signed request for `base` and `path`; ends the run with 1 when no URL can be made.
UrlReply sendSigned(Vorlu& vorlu, const ServerUrl& server, const std::string& secret) {
  const auto url = makeSignedURL(vorlu, server.base, secret, urlLifetime, server.path);
  if (!url || url->empty()) {
    vorlu.log(fmt::format("Error: Can not generate Vorlu server URL. If this issue persists contact {}",
                          vorlu.site.supportContact()));
    endRun(vorlu, 1);
  }
  UrlRequest request;
  request.url = *url;
  request.method = decryptString(vorlu, SiteText::requestMethod);
  request.ignoreCache = true;
  return vorlu.platform.urls.send(request);
}

}  // namespace

std::optional<std::string> makeSignedURL(Vorlu& vorlu, const std::string& baseURL, const std::string& secret,
                                         std::int64_t validSeconds, const std::string& path) {
  const std::int64_t expiry = static_cast<std::int64_t>(vorlu.platform.clock.now()) + validSeconds;
  const std::string message = fmt::format("{}{}{}", secret, path, expiry);
  if (!isUtf8(message)) {
    vorlu.log("Error: Unable to encode strings for signed URL");
    return std::nullopt;
  }
  const std::string signature = urlSafeBase64(vorlu.platform.security.sha256(message));
  return fmt::format("{}{}{}{}{}{}", baseURL, path, decryptString(vorlu, SiteText::signatureQueryPrefix), signature,
                     decryptString(vorlu, SiteText::expiryQueryPrefix), expiry);
}

std::optional<ServerUrl> splitServerURL(Vorlu& vorlu, const std::string& url) {
  std::optional<ServerUrl> parts = parsedUrl(url);
  if (!parts) {
    vorlu.log(fmt::format("Error: Failed to parse Vorlu server URL. If this issue persists contact {}",
                          vorlu.site.supportContact()));
  }
  return parts;
}

void fetchServerData(Vorlu& vorlu) {
  KeyMaterial& keys = vorlu.keys;
  keys.serverData.clear();
  keys.serverSignature.clear();
  keys.serverSec.clear();

  const std::string& secret = loadSigningSecret(vorlu);
  const ServerUrl server{decryptString(vorlu, SiteText::serverDataURL), decryptString(vorlu, SiteText::serverDataPath)};
  Result<std::string> body = replyBody(sendSigned(vorlu, server, secret), secretsTexts);
  if (!body) {
    vorlu.log(body.error());
    return;
  }
  Result<SecDownloadData> answer = decodeJson<SecDownloadData>(std::move(*body));
  if (!answer) {
    vorlu.log(fmt::format("Error: Vorlu server data decode failed - {})", answer.error()));
    return;
  }
  keys.serverData = std::move(answer->data).value_or("");
  keys.serverSignature = std::move(answer->signature).value_or("");
  keys.serverSec = std::move(answer->sec).value_or("");
}

std::vector<SelfUpdateStruct> fetchComponentManifest(Vorlu& vorlu) {
  const std::string url = fetchInventoryValue(vorlu, selfUpdates, false);
  const std::string token = fetchInventoryValue(vorlu, selfUpdates, true);
  const auto server = splitServerURL(vorlu, url);
  if (!server) exitProcess(1);
  Result<std::string> body = replyBody(sendSigned(vorlu, *server, token), manifestTexts);
  if (!body) {
    vorlu.log(body.error());
    return {};
  }
  auto manifest = decodeJson<std::vector<SelfUpdateStruct>>(std::move(*body));
  if (!manifest) {
    vorlu.log(fmt::format("Data decode failed {}", manifest.error()));
    return {};
  }
  return std::move(*manifest);
}

}  // namespace vorlu
