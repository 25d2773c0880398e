#include "vorlu/install/version_mismatch.h"

#include <fmt/format.h>

#include "vorlu/detection/installed_version.h"
#include "vorlu/detection/processor.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// Unlike an update check, the version for all processors goes first here.
std::string catalogVersion(const CurrentApp& app, Processor processor) {
  if (!app.latestVersion.empty()) return app.latestVersion;
  if (processor == Processor::silicon) return app.latestSiliconVersion;
  return processor == Processor::intel ? app.latestIntelVersion : std::string();
}

bool canBeCompared(const std::string& method) {
  return method == "CFBundleShortVersionString" || method == "CFBundleVersion" || method == "shellCommand";
}

}  // namespace

void checkForVersionMismatch(Vorlu& vorlu, const std::string& path) {
  const CurrentApp& app = vorlu.currentApp;
  const std::string latest = catalogVersion(app, processor(vorlu.platform.device));
  if (latest.empty()) return;
  vorlu.log(fmt::format("Checking for version mismatches for {} installed at path: {}", app.appName, path));
  if (!canBeCompared(app.latestVersionMethod)) return;
  const std::string found =
      readInstalledVersion(vorlu, {app.latestVersionMethod, path, app.infoPlistPath, app.latestVersionScript, ""});
  if (found == latest) {
    vorlu.log("No version mismatch found");
    return;
  }
  const char* method = app.latestVersionMethod == "shellCommand" ? "CFBundleVersion" : app.latestVersionMethod.c_str();
  vorlu.log(
      fmt::format("Version Mismatch: {0} has {1} defined as method and latest version as {2}, but the installed latest "
                  "version does not match {1}: {3}",
                  app.appName, method, latest, found));
}

}  // namespace vorlu
