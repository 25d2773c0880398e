#include "vorlu/install/install_failure.h"

#include <fmt/format.h>

#include <map>

#include "vorlu/detection/download_cache.h"
#include "vorlu/install/cancel_install.h"
#include "vorlu/install/remove_downloads.h"
#include "vorlu/install/sleep_assertion.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::string fillIn(const InstallJob& job, const char* text) {
  const CurrentApp& app = job.vorlu.currentApp;
  using fmt::arg;
  return fmt::format(
      fmt::runtime(text), arg("appName", job.request.appName), arg("operationLabel", job.request.operationLabel),
      arg("os", job.os), arg("minimumOS", app.minimumOS), arg("maximumOS", app.maximumOS),
      arg("required", job.space.required), arg("available", job.space.available.value_or(0)),
      arg("expected", job.hash.expected), arg("actual", job.hash.actual), arg("downloadFileType", app.downloadFileType),
      arg("supportContact", job.vorlu.site.supportContact()));
}

void detachImages(InstallJob& job, CleanUp cleanUp) {
  if (job.images.empty()) return;
  if (cleanUp == CleanUp::downloads || cleanUp == CleanUp::ofType) job.vorlu.log("Detaching disk image...");
  job.images.detachAll();
}

void cleanUp(InstallJob& job, CleanUp what) {
  const bool package = job.type != nullptr && job.type->method == InstallMethod::installDownload;
  switch (what) {
    case CleanUp::none:
      return;
    case CleanUp::output:
      return emptyOutput(job.vorlu);
    case CleanUp::file:
      return removeFile(job.vorlu, job.filePath);
    case CleanUp::downloads:
      return removeDownloads(job.vorlu, job.filePath);
    case CleanUp::ofType:
      return cleanUp(job, package ? CleanUp::file : CleanUp::downloads);
  }
}

}  // namespace

const FailureRow& failureRow(InstallFailure failure) {
  using enum InstallFailure;
  static const std::map<InstallFailure, FailureRow> rows = {
      {notInCatalog,
       {{{"Error: {appName} was not found in the Vorlu App catalog. Cancelling the {operationLabel}"}},
        "The {operationLabel} was cancelled because {appName} was not found in the App catalog",
        CleanUp::none}},
      {notInstallable,
       {{{"Error: {appName} is not installable via Vorlu"}},
        "The {operationLabel} was cancelled because {appName} is not available for installs",
        CleanUp::none}},
      {noSiliconURL,
       {{{"Error: {appName} is not available for Apple Silicon Macs. Cancelling {operationLabel}..."}},
        "The {operationLabel} was cancelled because {appName} is not available for Apple Silicon Macs",
        CleanUp::none}},
      {noIntelURL,
       {{{"Error: {appName} is not available for Intel Macs. Cancelling {operationLabel}..."}},
        "The {operationLabel} was cancelled because {appName} is not available for Intel Macs",
        CleanUp::none}},
      {noUniversalURL,
       {{{"Error: Universal download URL not found for {appName}. Cancelling {operationLabel}..."}},
        "The {operationLabel} was cancelled because {appName} because a download URL could not be obtained",
        CleanUp::none}},
      {diskSpace,
       {{{"Error: Not enough disk space available to download and install the {appName} {operationLabel}, Required: "
          "{required} KB, Available: {available} KB"}},
        "The {operationLabel} was cancelled because there is insufficient free disk space. Please free at least "
        "{required} KB and try again",
        CleanUp::none}},
      {minimumOS,
       {{{"Error: {appName} is not compatible with this macOS version. Installed OS: {os}, Required: {minimumOS} or "
          "higher. Cancelling the {operationLabel}"}},
        "The {operationLabel} was cancelled because {appName} is unsupported on macOS {os}. Please upgrade to at least "
        "macOS {minimumOS}",
        CleanUp::none}},
      {maximumOS,
       {{{"Error: {appName} is not compatible with this macOS version. Installed OS: {os}, Required: {maximumOS} or "
          "lower. Cancelling the {operationLabel}"}},
        "The {operationLabel} was cancelled because {appName} is unsupported on macOS {os}",
        CleanUp::none}},
      {download,
       {{{"Error: The {appName} installer could not be downloaded. Please ensure the network connection is stable and "
          "verify there are no network restrictions then retry the {operationLabel}"}},
        "{appName} could not be downloaded. Please check your internet connection and try again",
        CleanUp::none}},
      {unknownType,
       {{{"Error: Unrecognised download file type"},
         {"Unrecognised file type: {downloadFileType}", silent},
         {"Please ensure Vorlu is up to date and try again. If the problem persists, please contact {supportContact}"}},
        "The {appName} install was cancelled because the downloaded file type was not recognised",
        CleanUp::downloads}},
      {conversion,
       {{},
        "The {appName} install was cancelled because the disk image could not be converted. Please ensure no disk "
        "image restrictions are configured and try again",
        CleanUp::output}},
      {mount,
       {{{"Error: Could not mount disk image for {appName}. The {operationLabel} could not be processed"}},
        "The {appName} install was cancelled because the disk image could not be mounted. Please ensure disk images "
        "are allowed and try again",
        CleanUp::downloads}},
      {packageSignature,
       {{{"Error: The signing information for {appName} does not match the expected signing info. Cancelling the "
          "{operationLabel}"},
         {"Removing downloaded items..."}},
        "The {appName} install was cancelled because the developer could not be verified",
        CleanUp::file}},
      {signature,
       {{{"Error: The signing information for {appName} does not match the expected signing info. Cancelling the "
          "{operationLabel}"}},
        "The {appName} install was cancelled because the developer could not be verified",
        CleanUp::downloads}},
      {hash,
       {{{"Error: The sha256 hash for the {appName} installer does not match the expected hash."},
         {"Expected hash: {expected}"},
         {"Actual hash: {actual}"},
         {"Cancelling the {operationLabel}"}},
        "The {appName} install was cancelled because the installer file could not be verified",
        CleanUp::downloads}},
      {choicesFile,
       {{{"Error: Could not write the required choices XML for the {appName} installer. Cancelling the "
          "{operationLabel}"}},
        "The {appName} install was cancelled because the required install files could not be written",
        CleanUp::ofType}},
      {nestedItem,
       {{{"Error: No valid installers were found for {appName}"},
         {"Please contact {supportContact} for further assistance"}},
        "The {appName} install was cancelled because the nested installer file could not be found",
        CleanUp::downloads}},
      {sourceItem,
       {{{"Error: No valid installers were found for {appName}"},
         {"Please contact {supportContact} for further assistance"}},
        "The {appName} install was cancelled because the required install files could not be found",
        CleanUp::downloads}},
  };
  return rows.at(failure);
}

void recordInstallFailure(InstallJob& job) {
  job.vorlu.progress.installFailed = true;
  if (job.request.recordFailure) noteFailedUpdate(job.vorlu.updates, job.serverName);
}

InstallOutcome fail(InstallJob& job, InstallFailure failure) {
  const FailureRow& row = failureRow(failure);
  for (const FailureLine& line : row.lines) job.vorlu.log(fillIn(job, line.text), line.quiet);
  detachImages(job, row.cleanUp);
  cleanUp(job, row.cleanUp);
  allowIdleSleep(job.vorlu);
  job.vorlu.progress.cancelText = fillIn(job, row.cancelText);
  if (job.request.interactive) cancelInstall(job.vorlu, job.vorlu.progress.cancelText);
  recordInstallFailure(job);
  return InstallOutcome::failed;
}

}  // namespace vorlu
