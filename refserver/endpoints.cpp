#include "refserver/endpoints.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "refserver/sealed_report.h"
#include "refserver/secrets.h"

namespace vorlu::refserver {

namespace {

constexpr std::string_view filesPrefix = "/files/";
constexpr std::size_t largestReport = std::size_t{16} << 20;  // bytes of the body

Response jsonResponse(std::string text) {
  Response response;
  response.body = std::move(text);
  return response;
}

/// A data file's text, or what is wrong with it.
Response dataResponse(const Result<std::string>& text) {
  return text ? jsonResponse(*text) : messageResponse(500, text.error());
}

Response notFound(const Request& request) {
  return messageResponse(404, fmt::format("nothing is served at {}", request.path));
}

/// The catalog file behind a label, null for a label that isn't a catalog's.
const char* catalogFileOf(const std::string& label) {
  if (label == liveLabel) return DataFolder::catalogFile;
  if (label == testingLabel) return DataFolder::testingFile;
  return nullptr;
}

std::vector<std::string> tokensToSend(const std::vector<InventoryRecord>& records, const seal::Decoys& decoys) {
  std::vector<std::string> tokens;
  for (const InventoryRecord& record : records) {
    const auto count = static_cast<std::ptrdiff_t>(record.decoys);
    tokens.push_back(seal::spliceDecoys(record.token, {decoys.begin(), decoys.begin() + count}));
  }
  return tokens;
}

}  // namespace

Endpoints::Endpoints(const std::string& dataFolder, seal::SiteFile site, const seal::ServerKeys& keys,
                     ClockFunction clock)
    : data_(dataFolder),
      reports_(DataFolder::reports(dataFolder)),
      site_(std::move(site)),
      keys_(keys),
      clock_(std::move(clock)),
      prefixes_{site_[SiteText::signatureQueryPrefix], site_[SiteText::expiryQueryPrefix]} {}

bool Endpoints::isMethodServed(const std::string& method) const {
  return method == "GET" || method == "HEAD" || method == site_[SiteText::requestMethod];
}

Response Endpoints::answer(const Request& request) const {
  if (request.method == site_[SiteText::reportMethod]) {
    const auto expected = isReport(request);
    if (!expected) return messageResponse(500, expected.error());
    if (*expected) return report(request);
  }
  if (!isMethodServed(request.method)) return messageResponse(405, fmt::format("{} isn't served", request.method));
  if (request.path == pathOfUrl(site_[SiteText::connectivityURL])) return messageResponse(200, "connected");
  if (request.path == pathOfUrl(site_[SiteText::timestampURL])) return timestamp();
  if (request.path == pathOfUrl(site_[SiteText::serverDataURL]) + site_[SiteText::serverDataPath]) {
    return secrets(request);
  }
  if (request.path.starts_with(filesPrefix)) return file(request.path.substr(filesPrefix.size()));
  return inventoried(request);
}

Response Endpoints::timestamp() const {
  return dataResponse(data_.timestamp());
}

Response Endpoints::secrets(const Request& request) const {
  const auto verdict = checkSignature(request, keys_.signingSecret, site_[SiteText::serverDataPath]);
  if (verdict != SignatureVerdict::valid) return messageResponse(403, describe(verdict));
  const auto records = data_.inventory();
  if (!records) return messageResponse(500, records.error());
  const auto sealed = sealInventory(inventoryDocument(*records, tokensToSend(*records, keys_.decoys)), keys_.agent);
  return jsonResponse(
      nlohmann::json{{"data", sealed.data}, {"signature", sealed.signature}, {"sec", sealed.sec}}.dump());
}

Response Endpoints::file(const std::string& name) const {
  const auto path = data_.file(name);
  if (!path) return messageResponse(404, fmt::format("there is no file {}", name));
  Response response;
  response.contentType = "application/octet-stream";
  response.file = *path;
  return response;
}

Response Endpoints::inventoried(const Request& request) const {
  const auto records = data_.inventory();
  if (!records) return messageResponse(500, records.error());
  for (const InventoryRecord& record : *records) {
    if (record.path() != request.path) continue;
    if (const char* catalogFile = catalogFileOf(record.label)) return catalog(request, record, catalogFile);
    if (record.label == manifestLabel) return manifest(request, record);
    if (record.label == reportsLabel) return messageResponse(405, fmt::format("{} isn't served here", request.method));
  }
  return notFound(request);
}

Response Endpoints::catalog(const Request& request, const InventoryRecord& record, const char* file) const {
  if (request.header("Authorization") != site_[SiteText::authorizationPrefix] + record.token) {
    return messageResponse(401, "the token is missing or wrong");
  }
  return dataResponse(data_.array(file));
}

Response Endpoints::manifest(const Request& request, const InventoryRecord& record) const {
  const auto verdict = checkSignature(request, record.token, request.path);
  if (verdict != SignatureVerdict::valid) return messageResponse(403, describe(verdict));
  return dataResponse(data_.array(DataFolder::manifestFile));
}

Result<bool> Endpoints::isReport(const Request& request) const {
  const auto records = data_.inventory();
  if (!records) return records.failure();
  return std::any_of(records->begin(), records->end(), [&](const InventoryRecord& record) {
    return record.label == reportsLabel && record.path() == request.path;
  });
}

Response Endpoints::report(const Request& request) const {
  if (request.header("Authorization") != site_[SiteText::authorizationPrefix] + site_[SiteText::reportToken] ||
      request.header(site_[SiteText::reportHeaderName]) != site_[SiteText::reportHeaderValue]) {
    return messageResponse(401, "the token or the agent's header is missing or wrong");
  }
  if (request.body.size() > largestReport) return messageResponse(413, "the report is larger than 16 MB");
  if (const auto sealed = parseSealedReport(request.body); !sealed) return messageResponse(400, sealed.error());
  const auto id = reports_.put(request.body, clock_());
  if (!id) return messageResponse(500, id.error());
  return messageResponse(200, fmt::format("report {} upserted successfully", *id));
}

SignatureVerdict Endpoints::checkSignature(const Request& request, const std::string& secret,
                                           const std::string& path) const {
  return checkSignedQuery(request.query, prefixes_, secret, path, clock_());
}

}  // namespace vorlu::refserver
