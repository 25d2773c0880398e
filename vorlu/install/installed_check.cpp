#include "vorlu/install/installed_check.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/detection/installed_version.h"
#include "vorlu/detection/processor.h"
#include "vorlu/detection/version.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// First entry of the search directory whose name contains the app's prefix; empty when there is none.
std::string searchByPrefix(Vorlu& vorlu) {
  const CurrentApp& app = vorlu.currentApp;
  if (app.appPrefixName.empty()) return {};
  const std::string directory = app.prefixSearchPath.empty() ? "/Applications" : app.prefixSearchPath;
  const auto entries = vorlu.platform.files.list(directory);
  if (!entries) {
    vorlu.log(fmt::format("Failed to list prefix directory items: {}", entries.error()));
    return {};
  }
  const auto found = std::find_if(entries->begin(), entries->end(), [&](const std::string& entry) {
    return entry.find(app.appPrefixName) != std::string::npos;
  });
  return found == entries->end() ? std::string() : directory + "/" + *found;
}

/// Where the updated app lies; empty when it is nowhere.
std::string locateUpdatedApp(Vorlu& vorlu, const std::string& path) {
  const CurrentApp& app = vorlu.currentApp;
  FileManager& files = vorlu.platform.files;
  if (!path.empty() && files.exists(path)) return path;
  vorlu.log(fmt::format("The {} path has changed during the update", app.appName), silent);
  if (!app.appPath.empty() && files.exists(app.appPath)) return app.appPath;
  for (const std::string& alternate : app.alternatePaths) {
    if (alternate.empty() || !files.exists(alternate)) continue;
    vorlu.log(fmt::format("Found new path for {} using alternate path data: {}", app.appName, alternate), silent);
    return alternate;
  }
  std::string found = searchByPrefix(vorlu);
  if (!found.empty())
    vorlu.log(fmt::format("Found new path for {} using prefix search: {}", app.appName, found), silent);
  else
    vorlu.log(fmt::format(
        "Warning: Could not obtain new App path for {}. Unable to verify if the update was successful", app.appName));
  return found;
}

VersionSource versionSource(Vorlu& vorlu, const std::string& path) {
  const CurrentApp& app = vorlu.currentApp;
  VersionSource source;
  source.method = app.latestVersionMethod;
  source.path = path;
  source.infoPlistPath = app.infoPlistPath;
  source.script = app.latestVersionScript.empty() ? "print Unknown" : app.latestVersionScript;
  source.receiptPath = "Unknown";
  if (source.method == "pkgReceipt" && !app.installReceipts.empty())
    source.receiptPath = findPackageReceipt(vorlu, app.installReceipts.front() + ".plist");
  return source;
}

}  // namespace

bool verifyInstalledVersion(Vorlu& vorlu, const std::string& path, const std::string& previousVersion,
                            const std::string& displayName) {
  const std::string version = readInstalledVersion(vorlu, versionSource(vorlu, locateUpdatedApp(vorlu, path)));
  if (version == previousVersion) {
    vorlu.log(fmt::format("Error: The {} version has not changed since the update attempt. Version installed: {}",
                          displayName, version));
    return false;
  }
  if (version == "Unknown") {
    vorlu.log(fmt::format("Error: Unable to verify the {} version after the update attempt. Version installed: {}",
                          displayName, version));
    return false;
  }
  vorlu.log(fmt::format("{} was successfully updated from version {} to {}", displayName, previousVersion, version));
  return true;
}

bool isLatestInstalled(Vorlu& vorlu) {
  const CurrentApp& app = vorlu.currentApp;
  if (app.installedPath.empty()) return false;
  const std::string version = readInstalledVersion(vorlu, versionSource(vorlu, app.installedPath));
  const std::string& latest = effectiveLatestVersion(app, processor(vorlu.platform.device));
  return version != "Unknown" && compareVersions(latest, version) != 1;
}

}  // namespace vorlu
