#include "vorlu/server/catalog_fetch.h"

#include <fmt/format.h>

#include <optional>
#include <utility>
#include <vector>

#include "vorlu/server/catalog_window.h"
#include "vorlu/server/key_material.h"
#include "vorlu/server/server_texts.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::size_t usualEntryBytes = 1024;  // of JSON; few entries are shorter

const Ownership copyOwnership{0644, "root", "wheel"};

/// Whether the local copy is to be used. A testing run and the marker file win over everything else, but only after the
/// window has been stamped.
bool chooseOffline(Vorlu& vorlu, bool skipWindowCheck) {
  FileManager& files = vorlu.platform.files;
  bool offline = vorlu.catalog.offlineMode;
  if (!files.exists(paths::offlineData)) {
    offline = false;
  } else if (!skipWindowCheck) {
    offline = !isServerDue(vorlu);
  }
  return offline && !vorlu.modes.testingBlueprints && !files.exists(paths::onlineMarker);
}

UrlReply requestCatalog(Vorlu& vorlu, const CatalogEndpoint& endpoint) {
  UrlRequest request;
  request.url = endpoint.url;
  request.method = decryptString(vorlu, SiteText::requestMethod);
  request.headers.push_back(authorizationHeader(vorlu, endpoint.token));
  return vorlu.platform.urls.send(request);
}

/// What is logged when no answer came, and what a testing run, which has no local copy, adds before it ends.
struct NoAnswer {
  std::string text;
  std::string testingText;
};

std::optional<NoAnswer> missingAnswer(const UrlReply& reply) {
  if (!reply.data) {
    return NoAnswer{
        "No data was received from the server whilst attempting to gather application information. Will "
        "attempt to use offline data...",
        "Error: No data was received from the server whilst attempting to gather application information. "
        "Please retry later..."};
  }
  if (!reply.response) {
    return NoAnswer{
        "No response was received from the server whilst attempting to gather application information. "
        "Will attempt to use offline data...",
        "Error: No response was received from the server whilst attempting to gather application "
        "information. Please retry later..."};
  }
  if (reply.error) {
    return NoAnswer{fmt::format("An error was received from the server whilst attempting to gather application "
                                "information - {}. Will attempt to use offline data...",
                                *reply.error),
                    fmt::format("Error: An error was received from the server whilst attempting to gather application "
                                "information : {}. Please retry later...",
                                *reply.error)};
  }
  return std::nullopt;
}

/// One replacement, so that neither a full disk nor a kill loses the old copy.
Status replaceLocalCopy(FileManager& files, const std::vector<AppBlueprints>& entries) {
  Status written = files.writeAtomically(paths::offlineData, encodeJson(entries, JsonLayout::compact), copyOwnership);
  if (written) files.setHidden(paths::offlineData);
  return written;
}

/// Takes over a server's answer, whatever its status was: what counts is that it decodes.
Status acceptCatalog(Vorlu& vorlu, std::string body) {
  auto entries = decodeCatalog(std::move(body));
  if (!entries) return entries.failure();
  if (!vorlu.modes.testingBlueprints) {
    Status kept = replaceLocalCopy(vorlu.platform.files, *entries);
    if (!kept) return kept;
  }
  vorlu.catalog.entries = std::move(*entries);
  return success();
}

void fallBack(Vorlu& vorlu) {
  if (vorlu.modes.testingBlueprints) endRun(vorlu, 1);
  loadOfflineCatalog(vorlu);
}

}  // namespace

CatalogEndpoint catalogEndpoint(Vorlu& vorlu) {
  const char* label = vorlu.modes.testingBlueprints ? testingBlueprintsLabel : liveBlueprints;
  return {fetchInventoryValue(vorlu, label, false), fetchInventoryValue(vorlu, label, true)};
}

void fetchCatalog(Vorlu& vorlu, bool skipWindowCheck) {
  const CatalogEndpoint endpoint = catalogEndpoint(vorlu);
  vorlu.catalog.offlineMode = chooseOffline(vorlu, skipWindowCheck);
  if (vorlu.catalog.offlineMode) {
    vorlu.log("Obtaining Vorlu data...");
    loadOfflineCatalog(vorlu);
    return;
  }

  vorlu.log("Connecting to Vorlu server...");
  UrlReply reply = requestCatalog(vorlu, endpoint);
  if (const auto missing = missingAnswer(reply)) {
    vorlu.log(missing->text);
    if (vorlu.modes.testingBlueprints) vorlu.log(missing->testingText);
    fallBack(vorlu);
    return;
  }
  const Status accepted = acceptCatalog(vorlu, std::move(*reply.data));
  if (accepted) return;
  vorlu.log(fmt::format("Error during app data decode: {}", accepted.error()));
  fallBack(vorlu);
}

Result<std::vector<AppBlueprints>> decodeCatalog(std::string text) {
  std::vector<AppBlueprints> entries;
  // An entry takes kilobytes in memory: a list that grows moves them again and again. Room that isn't used stays
  // virtual.
  entries.reserve(text.size() / usualEntryBytes);
  const Status decoded = readJson(text, [&entries](Node& root) {
    CodingPath path;
    decodeValue(entries, root, path);
  });
  if (!decoded) return decoded.failure();
  return entries;
}

void loadOfflineCatalog(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (!files.exists(paths::offlineData)) {
    const std::string& contact = vorlu.site.supportContact();
    fatalStop(vorlu,
              fmt::format("Error: The offline Application data was not found. Unable to continue with decode. Please "
                          "contact {} for support",
                          contact),
              fmt::format("Error: The offline data was not found. Unable to continue with decode. Please contact {} "
                          "for support",
                          contact));
  }
  Result<std::string> text = files.read(paths::offlineData);
  auto entries = text ? decodeCatalog(std::move(*text)) : Result<std::vector<AppBlueprints>>(text.failure());
  if (!entries) fatalStop(vorlu, fmt::format("Error: Offline JSON Data decode failed - {}", entries.error()));
  vorlu.catalog.entries = std::move(*entries);
}

bool isServerDue(Vorlu& vorlu) {
  Clock& clock = vorlu.platform.clock;
  // The file as it stands: a run that stamped the window already isn't due again.
  const Result<RunDataFile> file = loadRunData(vorlu.platform.files);
  const std::int64_t stamp = file ? file->LastServerTimestamp.value_or(0) : 0;
  if (!isCatalogDue(clock, stamp, clock.now())) return false;
  updateRunData(vorlu, RunDataSelector::lastServerTimestamp);
  return true;
}

}  // namespace vorlu
