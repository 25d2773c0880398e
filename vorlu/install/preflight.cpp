#include "vorlu/install/preflight.h"

#include <fmt/format.h>

#include "vorlu/install/architecture.h"
#include "vorlu/install/macos_version.h"
#include "vorlu/vorlu.h"

namespace vorlu {

std::optional<InstallFailure> checkInstallability(const InstallJob& job) {
  if (job.request.enforceInstallable && !job.vorlu.currentApp.installsAllowed) return InstallFailure::notInstallable;
  return std::nullopt;
}

std::optional<InstallFailure> checkArchitecture(const InstallJob& job) {
  const CurrentApp& app = job.vorlu.currentApp;
  if (!app.specifyDownloadURL) return std::nullopt;
  if (!isPerProcessor(app))
    return app.universalDownloadURL.empty() ? std::optional(InstallFailure::noUniversalURL) : std::nullopt;
  if (job.processor == Processor::silicon && app.appleSiliconDownloadURL.empty()) return InstallFailure::noSiliconURL;
  if (job.processor == Processor::intel && app.intelDownloadURL.empty()) return InstallFailure::noIntelURL;
  return std::nullopt;
}

std::optional<InstallFailure> checkDiskSpace(InstallJob& job) {
  const InstallRequest& request = job.request;
  Log& log = job.vorlu.log;
  log(fmt::format("Checking for sufficient disk space for the {} {}...", request.appName, request.operationLabel));
  job.space = measureDiskSpace(job.vorlu.currentApp, job.vorlu.platform.files);
  if (!job.space.isSufficient()) return InstallFailure::diskSpace;
  log(fmt::format("Sufficient free disk space for the {} {}", request.appName, request.operationLabel));
  tick(job);
  progressText(job, fmt::format("Downloading {}...", request.appName));
  return std::nullopt;
}

std::optional<InstallFailure> checkSystemVersion(InstallJob& job) {
  const CurrentApp& app = job.vorlu.currentApp;
  Log& log = job.vorlu.log;
  log("Checking macOS version requirements...");
  if (!app.minimumOS.empty() && !checkMacOSVersion(log, job.os, app.minimumOS, false, false))
    return InstallFailure::minimumOS;
  if (!app.maximumOS.empty() && !checkMacOSVersion(log, job.os, app.maximumOS, true, false))
    return InstallFailure::maximumOS;
  tick(job);
  return std::nullopt;
}

}  // namespace vorlu
