#include "vorlu/policy/acceptable_use.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

#include "vorlu/detection/processor.h"
#include "vorlu/policy/dnd_config.h"
#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::string withApps(const std::string& line, const std::vector<std::string>& apps) {
  return replacedAll(line, "{apps}", fmt::format("{}", fmt::join(apps, ", ")));
}

/// One pass through the chain.
struct Chain {
  Vorlu& vorlu;
  const AcceptableUseKeys& keys;
  const AcceptableUseLines& lines;

  void log(const std::string& line) const { vorlu.log(line); }
  bool stop(const AcceptableUseLines::Stop& stop, const std::vector<std::string>& apps = {}) const {
    vorlu.log(withApps(stop.log, apps));
    vorlu.log.logForJamf(withApps(stop.summary, apps));
    return true;
  }
};

bool isAppInForeground(Vorlu& vorlu, const std::string& bundleId) {
  const auto active = vorlu.platform.applications.active();
  return std::find(active.begin(), active.end(), bundleId) != active.end();
}

bool checkForeground(const Chain& chain) {
  chain.log("Checking for configured DND App Bundle IDs...");
  const auto& identifiers = chain.keys.appBundleIDs;
  if (!identifiers) {
    chain.log("No DND App Bundle IDs are configured.");
    return false;
  }
  chain.log(fmt::format("Found configured DND App Bundle IDs: {}.", fmt::join(*identifiers, ", ")));
  chain.log("Checking if any of the configured DND Apps are in the foreground...");
  std::vector<std::string> inForeground;
  std::copy_if(identifiers->begin(), identifiers->end(), std::back_inserter(inForeground),
               [&](const std::string& id) { return isAppInForeground(chain.vorlu, id); });
  if (!inForeground.empty()) return chain.stop(chain.lines.foregroundApp, inForeground);
  chain.log(chain.lines.noAppInForeground);
  return false;
}

/// The first process of `names` that holds an assertion; nothing without one, and when the Mac can't tell.
std::optional<std::string> appWithAssertion(Vorlu& vorlu, const TextList& names) {
  const auto byProcess = vorlu.platform.power.assertionsByProcess();
  if (!byProcess || byProcess->empty()) {
    vorlu.log("Error: Could not obtain Application assertions. Unable to check for Apps currently using assertions");
    return std::nullopt;
  }
  for (const auto& [pid, assertions] : *byProcess)
    for (const PowerAssertion& assertion : assertions)
      if (!assertion.type.empty() && std::find(names.begin(), names.end(), assertion.processName) != names.end())
        return assertion.processName;
  return std::nullopt;
}

bool checkAppAssertions(const Chain& chain) {
  const auto& names = chain.keys.appAssertions;
  if (!names) {
    chain.log(chain.lines.noAssertionsConfigured);
    return false;
  }
  chain.log(withApps(chain.lines.assertionsConfigured, *names));
  chain.log("Checking if any of the configured Applications are using assertions...");
  if (const auto app = appWithAssertion(chain.vorlu, *names)) return chain.stop(chain.lines.assertion, {*app});
  chain.log("None of the configured DND Assertion Applications are currently using assertions");
  return false;
}

/// Whether this computer can tell of its cameras; logs why not.
bool canAskCameras(const Chain& chain) {
  constexpr int firstReleaseForSilicon = 13;
  Device& device = chain.vorlu.platform.device;
  const Processor type = processor(device);
  if (type == Processor::intel) return true;
  if (majorVersion(device.osVersion()) < firstReleaseForSilicon) {
    chain.log(
        "Camera usage cannot be checked because this device is Apple Silicon and running macOS Big Sur/Monterey. To "
        "resolve this, upgrade to the latest macOS");
    return false;
  }
  if (type == Processor::silicon) return true;
  chain.log("Unable to detect a built in camera. Continuing...");
  return false;
}

bool checkCamera(const Chain& chain) {
  if (!chain.keys.camera) return false;
  chain.log("Acceptable Camera Usage has been enabled. Checking if the camera is in use...");
  if (!canAskCameras(chain)) return false;
  for (const Camera& camera : chain.vorlu.platform.cameras.list()) {
    if (camera.inUse) return chain.stop(chain.lines.camera);
    chain.log("The camera is not in use. Continuing...");
  }
  return false;
}

bool checkDoNotDisturb(const Chain& chain) {
  if (!chain.keys.dndMode) return false;
  chain.log("Acceptable DND Mode usage has been enabled. Checking if DND mode is active...");
  if (!DNDConfig(chain.vorlu.platform, chain.vorlu.log).isDoNotDisturbActive()) return false;
  return chain.stop(chain.lines.doNotDisturb);
}

bool checkScreenSharing(const Chain& chain) {
  if (!chain.keys.screenSharing) return false;
  chain.log("Acceptable Screen Sharing Usage has been enabled. Checking if screen sharing is in use...");
  const auto shared = DNDConfig(chain.vorlu.platform, chain.vorlu.log).isScreenShared();
  if (!shared) {
    chain.log("Unable to check if screen sharing is in use. The DND framework is unavailable.");
    return false;
  }
  if (*shared) return chain.stop(chain.lines.screenSharing);
  chain.log("Screen Sharing is not in use. Continuing...");
  return false;
}

}  // namespace

const AcceptableUseLines scheduledAcceptableUseLines = {
    "None of the Acceptable Use Apps are in the foreground.",
    "No DND Application Assertions are configured.",
    "Found configured DND Application assertions: {apps}.",
    {"The following configured Acceptable Use App(s) are in the foreground, the update will be skipped with no user "
     "prompts: {apps}.",
     "Update skipped due to the following configured Acceptable User App(s) being in the foreground: {apps}."},
    {"The following configured DND Assertion App(s) are using assertions: {apps}. Skipping update prompt...",
     "Update skipped due to the following configured DND Assertion App(s) using assertions: {apps}."},
    {"The camera is in use. Skipping update...",
     "Update skipped due to the camera being in use when attempting to prompt the user."},
    {"DND mode is active. Skipping update prompt",
     "Update skipped due to DND mode being in use when attempting to prompt the user."},
    {"Screen Sharing is in use. Skipping update prompt",
     "Update skipped due to screen sharing being in use when attempting to prompt the user."},
};

std::optional<AcceptableUse> checkAcceptableUse(Vorlu& vorlu, const AcceptableUseKeys& keys,
                                                const AcceptableUseLines& lines) {
  struct Check {
    AcceptableUse use;
    bool (*stops)(const Chain&);
  };
  static constexpr std::array checks = {
      Check{AcceptableUse::foregroundApp, checkForeground}, Check{AcceptableUse::assertion, checkAppAssertions},
      Check{AcceptableUse::camera, checkCamera}, Check{AcceptableUse::doNotDisturb, checkDoNotDisturb},
      Check{AcceptableUse::screenSharing, checkScreenSharing}};
  const Chain chain{vorlu, keys, lines};
  for (const Check& check : checks)
    if (check.stops(chain)) return check.use;
  return std::nullopt;
}

}  // namespace vorlu
