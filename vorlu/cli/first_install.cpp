#include "vorlu/cli/first_install.h"

#include <fmt/format.h>

#include "vorlu/cli/key_material_pass.h"
#include "vorlu/detection/processor.h"
#include "vorlu/install/component_update.h"
#include "vorlu/install/network_quality.h"
#include "vorlu/server/signed_request.h"
#include "vorlu/state/agent_version.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/tool.h"
#include "vorlu/state/work_directories.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

const std::string oldSupport = "/Library/Application Support/MOSK";
constexpr const char* rosetta = "/Library/Apple/usr/share/rosetta/rosetta";

void secureKeyMaterial(Vorlu& vorlu) {
  obtainKeyMaterial(vorlu);
  if (requireKeychainItems(vorlu, true)) return;
  runJamfInventory(vorlu);
  endRun(vorlu, 1);
}

void removeOld(Vorlu& vorlu, const std::string& path) {
  if (const Status removed = vorlu.platform.files.remove(path); !removed)
    vorlu.log(fmt::format("Could not remove file at path: {}", path), silent);
}

/// Moves a file of an older version to its present place, over what lies there.
void moveOld(Vorlu& vorlu, const std::string& from, const std::string& to) {
  FileManager& files = vorlu.platform.files;
  if (!files.exists(from)) return;
  files.createDirectory(to.substr(0, to.rfind('/')), {0755, "root", "wheel"});
  if (const Status moved = files.move(from, to); !moved)
    vorlu.log(fmt::format("Error: Could not move {} to {} - {}", from, to, moved.error()));
}

void moveOldState(Vorlu& vorlu) {
  removeOld(vorlu, oldSupport + "/Bin");
  moveOld(vorlu, oldSupport + "/Logs/JamfPro_EA.log", paths::jamfLog);
  removeOld(vorlu, oldSupport + "/Logs");
  removeOld(vorlu, oldSupport + "/Resources");
  moveOld(vorlu, oldSupport + "/Run/runData.plist", paths::runData);
  removeOld(vorlu, oldSupport + "/Run");
}

void obtainComponents(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (files.exists(paths::promptComponentReceipt)) return;
  fetchServerData(vorlu);
  updateComponents(vorlu, false);
  if (!files.exists(paths::promptComponentReceipt)) {
    vorlu.log(
        "Error: One or more required Vorlu components could not be downloaded. Please review the network requirements "
        "for Vorlu and try again.");
  }
}

/// Components and many of the catalog's installers may need it.
void obtainRosetta(Vorlu& vorlu) {
  const std::string type = vorlu.platform.device.cpuType() ? cpuType(vorlu.platform.device) : "CPU type error";
  if (type != "Silicon" || vorlu.platform.files.exists(rosetta)) return;
  runTool(vorlu.platform.processes, vorlu.log,
          shellCommand("/usr/sbin/softwareupdate --install-rosetta --agree-to-license"));
}

}  // namespace

void firstInstallInitialise(Vorlu& vorlu) {
  vorlu.log(fmt::format("########### Vorlu {} installed ###########", agentVersion));
  vorlu.log(fmt::format("Initialising Vorlu {}...", agentVersion));
  secureKeyMaterial(vorlu);
  if (!vorlu.platform.files.exists(paths::networkQuality)) recordNetworkQuality(vorlu);
  moveOldState(vorlu);
  obtainComponents(vorlu);
  obtainRosetta(vorlu);
  ensureRunData(vorlu);
  ensureWorkDirectories(vorlu);
}

}  // namespace vorlu
