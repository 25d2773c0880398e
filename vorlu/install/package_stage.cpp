#include "vorlu/install/package_stage.h"

#include <fmt/format.h>

#include "vorlu/detection/download_cache.h"
#include "vorlu/install/archive.h"
#include "vorlu/install/find_item.h"
#include "vorlu/install/install_script.h"
#include "vorlu/install/installer_package.h"
#include "vorlu/install/remove_downloads.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using FailureOrNothing = std::optional<InstallFailure>;

bool isSignedAsExpected(InstallJob& job, const std::string& path, const std::string& announcement) {
  Vorlu& vorlu = job.vorlu;
  logHashAsGiven(vorlu);
  vorlu.log(announcement);
  return matchesExpectedSignature(vorlu, readPackageSignature(vorlu, path));
}

FailureOrNothing checkHash(InstallJob& job) {
  job.hash = verifyInstallerHash(job.vorlu, job.filePath, job.digest);
  return job.hash.matches() ? std::nullopt : FailureOrNothing(InstallFailure::hash);
}

/// Runs the installer, with the catalog's choices in a file where it has some.
FailureOrNothing runInstaller(InstallJob& job, const std::string& path) {
  Vorlu& vorlu = job.vorlu;
  std::string choicesPath;
  if (const std::string& choices = vorlu.currentApp.installerChoices; !choices.empty()) {
    choicesPath = fmt::format("{}/{}Choices.xml", paths::output, replacedAll(job.request.appName, "/", "-"));
    FileManager& files = vorlu.platform.files;
    files.createDirectory(paths::output, {0755, "root", "wheel"});
    if (!files.writeAtomically(choicesPath, choices, {0644, "root", "wheel"})) return InstallFailure::choicesFile;
  }
  installPackage(vorlu, path, choicesPath, false, job.anyProgress());
  return std::nullopt;
}

const std::vector<std::string>& nestedPackages(const InstallJob& job) {
  const CurrentApp& app = job.vorlu.currentApp;
  if (!app.architectureNesting) return app.nestedDownloadFiles;
  return job.processor == Processor::silicon ? app.nestedSiliconDownloadFiles : app.nestedIntelDownloadFiles;
}

/// Path of a nested package, empty when it isn't there.
std::string findPackage(InstallJob& job, const std::string& item) {
  if (item.empty()) return {};
  const std::string root = job.searchRoot();
  if (placeInside(job.vorlu.platform.files, root, item)) return fmt::format("{}/{}", root, item);
  const std::string found = findItem(job.vorlu, root, item);
  return found.empty() ? found : fmt::format("{}/{}", root, found);
}

FailureOrNothing installNestedPackage(InstallJob& job, const std::string& path, bool first) {
  const std::string& appPath = job.vorlu.currentApp.appPath;
  const std::string announcement =
      fmt::format("Verifying signing information for {}...", appPath.substr(appPath.rfind('/') + 1));
  if (job.vorlu.currentApp.verifySignature && !isSignedAsExpected(job, path, announcement))
    return InstallFailure::signature;
  tick(job);
  if (first)
    runPreInstallScript(job);
  else
    tick(job);
  return runInstaller(job, path);
}

}  // namespace

FailureOrNothing installDownload(InstallJob& job) {
  if (job.vorlu.currentApp.verifySignature) {
    if (!isSignedAsExpected(job, job.filePath, "Verifying signing information..."))
      return InstallFailure::packageSignature;
  } else if (const auto failure = checkHash(job)) {
    return failure;
  }
  tick(job);
  runPreInstallScript(job);
  return runInstaller(job, job.filePath);
}

FailureOrNothing installNestedPackages(InstallJob& job) {
  const std::vector<std::string>& items = nestedPackages(job);
  if (items.empty()) return std::nullopt;
  if (!job.vorlu.currentApp.verifySignature) {
    if (const auto failure = checkHash(job)) return failure;
    // The converted image is what is installed from; the download itself has done its part.
    if (job.type->licence) removeFile(job.vorlu, job.filePath);
  }
  bool first = true;
  for (auto item = items.begin(); item != items.end(); ++item) {
    const std::string path = findPackage(job, *item);
    if (!path.empty()) {
      if (const auto failure = installNestedPackage(job, path, first)) return failure;
      first = false;
    } else if (item + 1 == items.end()) {
      return InstallFailure::nestedItem;
    }
  }
  return std::nullopt;
}

}  // namespace vorlu
