#include "vorlu/install/pipeline.h"

#include <fmt/format.h>

#include <variant>

#include "vorlu/detection/download_cache.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/install/copy_list.h"
#include "vorlu/install/download.h"
#include "vorlu/install/install_failure.h"
#include "vorlu/install/install_job.h"
#include "vorlu/install/install_script.h"
#include "vorlu/install/installed_check.h"
#include "vorlu/install/package_stage.h"
#include "vorlu/install/placement.h"
#include "vorlu/install/preflight.h"
#include "vorlu/install/preparation.h"
#include "vorlu/install/remove_downloads.h"
#include "vorlu/install/running_apps.h"
#include "vorlu/install/sleep_assertion.h"
#include "vorlu/platform/termination.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr int downloadAttempts = 20;

/// What a stage answers: nothing to go on, or how the pipeline ends for this app.
using StageEnd = std::optional<InstallOutcome>;

StageEnd failOn(InstallJob& job, std::optional<InstallFailure> failure) {
  return failure ? StageEnd(fail(job, *failure)) : std::nullopt;
}

/// Nothing of the app before may decide about this one.
void clearLastApp(InstallProgress& progress) {
  progress.installFailed = false;
  progress.appInUseSeen = false;
  progress.mountPoint.clear();
  progress.convertedImagePath.clear();
  progress.downloadFinished = false;
  progress.downloadFailed = false;
  progress.cancelText.clear();
}

/// What the stages need to know of the app that was selected.
void describeJob(InstallJob& job) {
  const CurrentApp& app = job.vorlu.currentApp;
  job.processor = processor(job.vorlu.platform.device);
  job.os = job.vorlu.platform.device.osVersion();
  job.serverName = app.serverName;
  job.type = findDownloadType(app.downloadFileType);
  job.fileName = fmt::format("{}.{}", cacheFileStem(job.request.appName, effectiveLatestVersion(app, job.processor)),
                             cacheExtension(app.downloadFileType));
  job.filePath = fmt::format("{}/{}", paths::downloads, job.fileName);
}

StageEnd checkConditions(InstallJob& job) {
  auto failure = checkInstallability(job);
  if (!failure) failure = checkArchitecture(job);
  if (!failure) failure = checkDiskSpace(job);
  if (!failure) failure = checkSystemVersion(job);
  return failOn(job, failure);
}

StageEnd ensureCacheDirectory(InstallJob& job) {
  FileManager& files = job.vorlu.platform.files;
  if (!files.exists(paths::downloads)) {
    job.vorlu.log("Download cache directory does not exist. Creating it...");
    if (const Status made = files.createDirectory(paths::downloads, {0755, "root", "wheel"}); !made)
      job.vorlu.log(fmt::format("Error: Could not create the download cache directory - {}", made.error()));
  }
  tick(job);
  return std::nullopt;
}

void attemptDownload(InstallJob& job, bool isRetry) {
  job.digest = downloadInstaller(job.vorlu, isRetry, job.request.interactive, job.request.appName, job.fileName,
                                 job.request.operationLabel);
}

StageEnd obtainInstaller(InstallJob& job) {
  FileManager& files = job.vorlu.platform.files;
  const std::string& appName = job.request.appName;
  if (!job.request.enforceInstallable && files.exists(job.filePath)) {
    job.vorlu.log(fmt::format("{} update found in the local download cache. Skipping download", appName));
    tick(job);
  } else {
    tick(job);
    attemptDownload(job, false);
  }
  for (int attempt = 2; attempt <= downloadAttempts && !files.exists(job.filePath); ++attempt) {
    job.vorlu.log(
        fmt::format("The {} download failed. Retrying (attempt {} of {})", appName, attempt, downloadAttempts));
    attemptDownload(job, true);
  }
  if (!files.exists(job.filePath)) return fail(job, InstallFailure::download);
  job.vorlu.log("Download complete");
  tick(job);
  progressText(job, fmt::format("Installing {}...", appName));
  return std::nullopt;
}

/// Leaves an app that is in use for a later run, with its installer in the cache.
InstallOutcome skipAppInUse(InstallJob& job) {
  Vorlu& vorlu = job.vorlu;
  if (!job.request.suppressInUseNotice)
    vorlu.log(fmt::format("{} is currently in use. Skipping the update...", job.request.appName));
  vorlu.progress.appInUseSeen = true;
  vorlu.updates.skippedUpdates.push_back(vorlu.updates.currentUpdate);
  allowIdleSleep(vorlu);
  return InstallOutcome::inUse;
}

StageEnd considerRunningApp(InstallJob& job) {
  const InstallRequest& request = job.request;
  Vorlu& vorlu = job.vorlu;
  if (request.cacheOnly) {
    allowIdleSleep(vorlu);
    return InstallOutcome::inUse;
  }
  if (request.checkRunning) {
    const bool goesOn = vorlu.currentApp.updateWhileRunning;
    if (!goesOn) vorlu.log(fmt::format("Checking if {} is running....", request.appName));
    const bool running = isSelectedAppRunning(vorlu, request.installedPath, request.appName);
    if (running && !goesOn) return skipAppInUse(job);
    if (!goesOn) vorlu.log(fmt::format("{} is not running. Continuing...", request.appName));
    job.wasRunning = running;
  }
  tick(job);
  return std::nullopt;
}

StageEnd prepareInstaller(InstallJob& job) {
  if (job.type == nullptr) return fail(job, InstallFailure::unknownType);
  if (job.type->outer == Container::none) return std::nullopt;
  return failOn(job, openInstaller(job));
}

StageEnd installByCopy(InstallJob& job) {
  const auto list = buildCopyList(job, job.searchRoot());
  if (const auto* failure = std::get_if<InstallFailure>(&list)) return fail(job, *failure);
  tick(job);
  runPreInstallScript(job);
  const bool mayMove = !job.type->isDiskImage();
  placeItems(job.vorlu, std::get<std::vector<AppCopyArr>>(list), mayMove, job.anyProgress());
  tick(job);
  return std::nullopt;
}

StageEnd installItems(InstallJob& job) {
  switch (job.type->method) {
    case InstallMethod::copySourceItems:
      return installByCopy(job);
    case InstallMethod::installDownload:
      return failOn(job, installDownload(job));
    case InstallMethod::installNestedPackages:
      return failOn(job, installNestedPackages(job));
  }
  return std::nullopt;
}

StageEnd finishInstall(InstallJob& job) {
  runPostInstallScript(job);
  return std::nullopt;
}

StageEnd checkInstalledVersion(InstallJob& job) {
  const InstallRequest& request = job.request;
  if (!request.enforceInstallable) {
    job.checkFailed =
        !verifyInstalledVersion(job.vorlu, request.installedPath, request.installedVersion, request.appName);
    if (job.checkFailed) recordInstallFailure(job);
  }
  tick(job);
  return std::nullopt;
}

StageEnd cleanUp(InstallJob& job) {
  if (job.type->isDiskImage()) {
    job.vorlu.log("Detaching disk image...");
    job.images.detachLast();
  }
  tick(job);
  removeDownloads(job.vorlu, job.filePath);
  if (job.wasRunning) relaunchApp(job.vorlu);
  tick(job);
  allowIdleSleep(job.vorlu);
  return job.checkFailed ? InstallOutcome::failed : InstallOutcome::installed;
}

}  // namespace

InstallRequest updateRequest(const ApplicationInventory& record) {
  InstallRequest request;
  request.appName = record.appName;
  request.installedPath = record.installedPath;
  request.installedVersion = record.installedVersion;
  request.operationLabel = "update";
  return request;
}

InstallOutcome runInstallPipeline(Vorlu& vorlu, const InstallRequest& request) {
  InstallJob job(vorlu, request);
  clearLastApp(vorlu.progress);
  job.serverName = request.appName;
  if (!findApp(vorlu, request.appName)) return fail(job, InstallFailure::notInCatalog);
  const IdleSleepHold awake(vorlu, fmt::format("Initialising {} {}", request.appName, request.operationLabel));
  describeJob(job);

  try {
    for (const auto stage : {checkConditions, ensureCacheDirectory, obtainInstaller, considerRunningApp,
                             prepareInstaller, installItems, finishInstall, checkInstalledVersion, cleanUp}) {
      vorlu.platform.processes.throwIfTerminated();
      if (const StageEnd end = stage(job)) return *end;
    }
  } catch (const Terminated&) {
    job.images.detachAll();
    if (vorlu.platform.files.exists(paths::output)) emptyOutput(vorlu);
    throw;
  }
  return InstallOutcome::installed;
}

}  // namespace vorlu
