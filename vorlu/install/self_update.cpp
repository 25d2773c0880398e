#include "vorlu/install/self_update.h"

#include <fmt/format.h>

#include "vorlu/detection/version.h"
#include "vorlu/install/installer_package.h"
#include "vorlu/install/manifest_package.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/state/agent_version.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

bool meetsRequirement(Vorlu& vorlu, const std::string& requirement) {
  vorlu.log("Verifying Vorlu requirements..");
  if (compareVersions(requirement, vorlu.platform.device.osVersion()) == 1) {
    vorlu.log(fmt::format(
        "Warning: Vorlu could not be updated because the current macOS version is unsupported. Please upgrade to at "
        "least macOS {} to install Vorlu updates",
        requirement));
    return false;
  }
  vorlu.log("The OS requirements were met for the update. Continuing...");
  return true;
}

std::optional<std::string> download(Vorlu& vorlu, const SelfUpdateStruct& record) {
  const std::string& version = *record.latestVersion;
  vorlu.log(fmt::format("Downloading Vorlu v{} update...", version));
  auto package = downloadPackage(vorlu, record, fmt::format("Vorlu-v{}.pkg", version),
                                 fmt::format("Error: Failed to download the Vorlu v{} update. Retrying", version));
  if (package) return package;
  vorlu.log(
      fmt::format("Error: Could not download the Vorlu v{} update. Please check the network connection and verify "
                  "the network requirements for Vorlu and try again.",
                  version));
  vorlu.log(fmt::format("If this error persists, contact {} for support", vorlu.site.supportContact()));
  return std::nullopt;
}

bool verify(Vorlu& vorlu, const SelfUpdateStruct& record, const std::string& package) {
  if (isPackageSigned(vorlu, package, record)) return true;
  vorlu.log(
      fmt::format("Error: The downloaded Vorlu v{} update could not be verified and will be removed. Please "
                  "contact {} for assistance.",
                  *record.latestVersion, vorlu.site.supportContact()));
  return false;
}

void install(Vorlu& vorlu, const SelfUpdateStruct& record, const std::string& package) {
  if (installPackage(vorlu, package, "", false, false)) {
    vorlu.log(fmt::format("Vorlu was updated from version {} to version {}", agentVersion, *record.latestVersion));
    return;
  }
  vorlu.log(fmt::format("Error: The Vorlu v{} update could not be installed. Please contact {} for assistance.",
                        *record.latestVersion, vorlu.site.supportContact()));
}

}  // namespace

void selfUpdate(Vorlu& vorlu) {
  const auto record = manifestRecord(vorlu, "Vorlu");
  if (!record) return;
  vorlu.log("Checking for Vorlu updates...");
  if (compareVersions(*record->latestVersion, agentVersion) != 1) {
    vorlu.log("No Vorlu updates are required");
    return;
  }
  if (!meetsRequirement(vorlu, orEmpty(record->requirement))) return;
  const auto package = download(vorlu, *record);
  if (!package) return;
  if (verify(vorlu, *record, *package)) install(vorlu, *record, *package);
  vorlu.platform.files.remove(*package);
}

}  // namespace vorlu
