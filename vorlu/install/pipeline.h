#pragma once

#include <string>

namespace vorlu {

struct Vorlu;
struct ApplicationInventory;

/// What a flow asks of the pipeline for one application.
struct InstallRequest {
  std::string appName;              ///< selected with `findApp` and shown in messages
  std::string installedPath;        ///< empty if it isn't installed
  std::string installedVersion;     ///< "N/A" or empty for a first install
  std::string operationLabel;       ///< "update" or "install"
  bool recordFailure = false;       ///< a failure appends `serverName` to `failedUpdates`
  bool interactive = false;         ///< an install window of this run exists; a failure ends the process with 1
  bool enforceInstallable = false;  ///< obey `installsAllowed`, ignore the cache, skip the check after the install
  bool writeProgress = false;       ///< progress lines though not interactive
  bool checkRunning = false;        ///< leave an application in use alone
  bool suppressInUseNotice = false;
  bool cacheOnly = false;  ///< fetch the installer and leave every app for a later run, as if it were in use
};

/// The request for the update of a pending application; the caller adds its own flags.
InstallRequest updateRequest(const ApplicationInventory& record);

enum class InstallOutcome {
  installed,
  inUse,  ///< left alone, with its installer in the cache
  failed,
};

/// Takes one application from a newer version in the catalog to a checked install. Blocks until it has finished. The
/// outcome is this app's alone; `progress` and `updates` hold the process-wide results as well.
InstallOutcome runInstallPipeline(Vorlu& vorlu, const InstallRequest& request);

}  // namespace vorlu
