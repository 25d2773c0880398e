#include "vorlu/install/component_update.h"

#include <fmt/format.h>

#include "vorlu/detection/installed_version.h"
#include "vorlu/detection/version.h"
#include "vorlu/install/installer_package.h"
#include "vorlu/install/manifest_package.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/state/agent_version.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

const std::string setAside = paths::components + "/prompts/.Dialog.previous";

/// A component that lacks a part counts as older than any version.
bool isCurrent(Vorlu& vorlu, const SelfUpdateStruct& record) {
  if (!componentsInstalled(vorlu.platform.files)) return false;
  VersionSource source;
  source.method = "pkgReceipt";
  source.receiptPath = paths::promptComponentReceipt;
  const std::string installed = readInstalledVersion(vorlu, source);
  return installed != "Unknown" && compareVersions(*record.latestVersion, installed) != 1;
}

bool meetsRequirement(Vorlu& vorlu, const std::string& requirement) {
  vorlu.log("Verifying component requirements..");
  if (compareVersions(requirement, agentVersion) == 1) {
    vorlu.log(
        fmt::format("Warning: The required Vorlu components are incompatible for the installed version of Vorlu. "
                    "Please update Vorlu to at least version {}",
                    requirement));
    return false;
  }
  vorlu.log("The component requirements were met for the update. Continuing...");
  return true;
}

std::optional<std::string> download(Vorlu& vorlu, const SelfUpdateStruct& record) {
  vorlu.log("Downloading required Vorlu components...");
  auto package = downloadPackage(vorlu, record, fmt::format("VorluComponents-v{}.pkg", *record.latestVersion),
                                 "Error: Failed to download the missing required Vorlu components. Retrying");
  if (package) return package;
  vorlu.log(
      "Error: Could not download the missing required Vorlu components. Please check the network connection and verify "
      "the network requirements for Vorlu and try again.");
  vorlu.log(fmt::format("If this error persists, contact {}", vorlu.site.supportContact()));
  return std::nullopt;
}

bool verify(Vorlu& vorlu, const SelfUpdateStruct& record, const std::string& package) {
  if (isPackageSigned(vorlu, package, record)) return true;
  vorlu.log(
      fmt::format("Error: The downloaded missing Vorlu components could not be verified. Please contact {} for "
                  "assistance.",
                  vorlu.site.supportContact()));
  return false;
}

/// What a run that was killed in the middle of an install set aside is the component still, unless a new one is there.
void recoverOldCopy(FileManager& files) {
  if (!files.exists(setAside)) return;
  if (files.exists(paths::dialogProgram))
    files.remove(setAside);
  else
    files.remove(paths::dialogBundle), files.move(setAside, paths::dialogBundle);
}

/// A package without a usable bundle leaves its receipt all the same, which must not tell of a version that isn't
/// there.
void restoreReceipt(FileManager& files, const Result<std::string>& receipt) {
  if (receipt)
    files.writeAtomically(paths::promptComponentReceipt, *receipt, {0644, "root", "wheel"});
  else
    files.remove(paths::promptComponentReceipt);
}

bool replaceBundle(Vorlu& vorlu, const std::string& package) {
  FileManager& files = vorlu.platform.files;
  const Result<std::string> receipt = files.read(paths::promptComponentReceipt);
  if (files.exists(paths::dialogBundle) && !files.move(paths::dialogBundle, setAside)) return false;
  const bool installed = installPackage(vorlu, package, "", false, false) && files.exists(paths::dialogProgram);
  if (!installed) {
    files.remove(paths::dialogBundle);
    restoreReceipt(files, receipt);
  }
  recoverOldCopy(files);
  return installed;
}

void install(Vorlu& vorlu, const std::string& package) {
  if (replaceBundle(vorlu, package)) return;
  vorlu.log(
      fmt::format("Error: The required missing Vorlu comonents could not be installed. Please contact {} for "
                  "assistance.",
                  vorlu.site.supportContact()));
}

}  // namespace

bool componentsInstalled(FileManager& files) {
  return files.exists(paths::dialogBundle) && files.exists(paths::dialogProgram) &&
         files.exists(paths::promptComponentReceipt);
}

void updateComponents(Vorlu& vorlu, bool /*afterCheck*/) {
  recoverOldCopy(vorlu.platform.files);
  const auto record = manifestRecord(vorlu, "Dialog");
  if (!record) return;
  vorlu.log("Checking for Vorlu component updates...");
  if (isCurrent(vorlu, *record)) {
    vorlu.log("No Vorlu component updates are required");
    return;
  }
  if (!meetsRequirement(vorlu, orEmpty(record->requirement))) return;
  const auto package = download(vorlu, *record);
  if (!package) return;
  if (verify(vorlu, *record, *package)) install(vorlu, *package);
  vorlu.platform.files.remove(*package);
}

}  // namespace vorlu
