#include "vorlu/install/download.h"

#include <fmt/format.h>

#include "vorlu/detection/download_cache.h"
#include "vorlu/detection/download_url.h"
#include "vorlu/detection/processor.h"
#include "vorlu/install/architecture.h"
#include "vorlu/install/sleep_assertion.h"
#include "vorlu/install/ticker.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// The build that suits this computer; nothing on a processor that is neither of the two.
std::optional<DownloadCase> suitableBuild(Vorlu& vorlu) {
  if (isUniversal(vorlu.currentApp)) return DownloadCase::universal;
  switch (processor(vorlu.platform.device)) {
    case Processor::silicon:
      return DownloadCase::appleSilicon;
    case Processor::intel:
      return DownloadCase::intel;
    case Processor::unknown:
      break;
  }
  return std::nullopt;
}

const std::string& lookupScript(const CurrentApp& app, DownloadCase build) {
  if (build == DownloadCase::universal) return app.universalDownloadURLCode;
  return build == DownloadCase::intel ? app.intelDownloadURLCode : app.siliconDownloadURLCode;
}

/// The URL of a build, fixed or looked up; nothing, logged, when the look-up fails.
std::optional<std::string> obtainURL(Vorlu& vorlu, DownloadCase build, const std::string& appName,
                                     const std::string& operationLabel) {
  const CurrentApp& app = vorlu.currentApp;
  auto url = resolveDownloadURL(vorlu, build);
  if (url && (app.specifyDownloadURL || !url->empty())) return url;

  const bool hasSource = !app.javascriptScrapeURL.empty() || !lookupScript(app, build).empty();
  if (hasSource && build == DownloadCase::intel)
    vorlu.log(fmt::format("Error: Could not obtain Intel download URL for {}. Skipping {}", appName, operationLabel));
  else if (hasSource)
    vorlu.log(
        fmt::format("Error: Could not obtain universal download URL for {}. Skipping {}", appName, operationLabel));
  return std::nullopt;
}

void announce(Vorlu& vorlu, DownloadCase build, const std::string& appName) {
  if (build == DownloadCase::universal) vorlu.log(fmt::format("Downloading universal {} installer...", appName));
  if (build == DownloadCase::appleSilicon)
    vorlu.log(fmt::format("Downloading {} installer for Apple Silicon...", appName));
  if (build == DownloadCase::intel) vorlu.log(fmt::format("Downloading {} installer for Intel...", appName));
}

/// Why a finished request brought no installer; nothing when it did.
std::optional<std::string> faultOf(const DownloadReply& reply, const std::string& url) {
  if (reply.error) return fmt::format("Could not initiate download from URL {}. Response: {}", url, *reply.error);
  if (reply.response && reply.response->status != 200)
    return fmt::format("Could not download file from URL {}. Status code: {}", url, reply.response->status);
  if (!reply.location) return "The connection was interrupted during download";
  return std::nullopt;
}

UrlRequest requestFor(const Transfer& transfer) {
  UrlRequest request;
  request.url = replacedAll(transfer.url, " ", "%20");
  if (!transfer.headerKey.empty() && !transfer.headerValue.empty())
    request.headers.emplace_back(transfer.headerKey, transfer.headerValue);
  return request;
}

/// Fetches and puts the file in its place; nothing, logged, on any failure. `unreachable` is set when no server
/// answered.
std::optional<FileDigest> fetch(Vorlu& vorlu, const Transfer& transfer, bool* unreachable = nullptr) {
  FileManager& files = vorlu.platform.files;
  const UrlRequest request = requestFor(transfer);
  DownloadReply reply = vorlu.platform.urls.download(request, paths::downloads);
  if (const auto fault = faultOf(reply, request.url)) {
    vorlu.log(*fault);
    if (unreachable) *unreachable = reply.error.has_value();
    if (reply.location) files.remove(*reply.location);
    return std::nullopt;
  }
  if (!files.move(*reply.location, transfer.destination)) {
    vorlu.log("The download completed, but could not be moved to the cache folder");
    files.remove(*reply.location);
    return std::nullopt;
  }
  return FileDigest{std::move(reply.file), std::move(reply.sha256)};
}

/// Makes room for a fresh download. True when a file was in the way, which ends this attempt.
bool removePreviousDownload(Vorlu& vorlu, const std::string& path) {
  if (!vorlu.platform.files.exists(path)) return false;
  vorlu.log(fmt::format("Requested download already exists at path: {}", path));
  vorlu.log("Removing previous download...");
  removeFile(vorlu, path);
  return true;
}

void clearFlags(InstallProgress& progress) {
  progress.downloadFinished = false;
  progress.downloadFailed = false;
}

std::optional<FileDigest> downloadBesideTicker(Vorlu& vorlu, bool isRetry, const Transfer& transfer) {
  InstallProgress& progress = vorlu.progress;
  clearFlags(progress);  // the ticker must not see those of the attempt before
  std::optional<FileDigest> digest;
  runWithTicker(
      vorlu, [&] { digest = downloadFile(vorlu, isRetry, transfer); },
      [&] { progress.downloadFailed = !progress.downloadFinished; }, [&] { progressTicker(vorlu, isRetry); });
  return digest;
}

}  // namespace

std::optional<FileDigest> downloadFile(Vorlu& vorlu, bool isRetry, const Transfer& transfer) {
  InstallProgress& progress = vorlu.progress;
  clearFlags(progress);
  std::optional<FileDigest> digest;
  if (transfer.url.empty())
    vorlu.log("Error: The specified URL is empty. Cannot download file");
  else if (isRetry || !removePreviousDownload(vorlu, transfer.destination))
    digest = fetch(vorlu, transfer);
  progress.downloadFinished = digest.has_value();
  progress.downloadFailed = !digest.has_value();
  return digest;
}

FetchEnd fetchInto(Vorlu& vorlu, const Transfer& transfer) {
  if (transfer.url.empty()) {
    vorlu.log("Error: The specified URL is empty. Cannot download file");
    return FetchEnd::refused;
  }
  removePreviousDownload(vorlu, transfer.destination);
  bool unreachable = false;
  if (!fetch(vorlu, transfer, &unreachable)) return unreachable ? FetchEnd::unreachable : FetchEnd::refused;
  vorlu.platform.files.setOwnership(transfer.destination, 0644, "root", "wheel");
  return FetchEnd::done;
}

std::optional<FileDigest> downloadInstaller(Vorlu& vorlu, bool isRetry, bool interactive, const std::string& appName,
                                            const std::string& fileName, const std::string& operationLabel) {
  const CurrentApp& app = vorlu.currentApp;
  const auto build = suitableBuild(vorlu);
  if (!build)
    vorlu.log(fmt::format("Error: Could not determine architecture type. Skipping {} {}...", appName, operationLabel));
  const auto url = build ? obtainURL(vorlu, *build, appName, operationLabel) : std::nullopt;
  if (!url) {
    allowIdleSleep(vorlu);
    vorlu.progress.downloadFailed = true;
    return std::nullopt;
  }
  announce(vorlu, *build, appName);
  const Transfer transfer{*url, paths::downloads + "/" + fileName, app.requestHeaderKey, app.requestHeaderValue};
  return interactive ? downloadBesideTicker(vorlu, isRetry, transfer) : downloadFile(vorlu, isRetry, transfer);
}

}  // namespace vorlu
