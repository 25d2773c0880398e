#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/state/preferences.h"

namespace vorlu {

struct Vorlu;

/// What a user may be doing that no update may interrupt.
enum class AcceptableUse { foregroundApp, assertion, camera, doNotDisturb, screenSharing };

/// The keys of one section of the preferences.
struct AcceptableUseKeys {
  std::optional<TextList> appBundleIDs;
  std::optional<TextList> appAssertions;
  bool camera = false;
  bool dndMode = false;
  bool screenSharing = false;
};
template <class Section>
AcceptableUseKeys acceptableUseKeys(const Section& section) {
  return {section.acceptableAppBundleIDs, section.acceptableAppAssertions, section.acceptableCameraUsage,
          section.acceptableDNDMode, section.acceptableScreenSharing};
}

/// The lines in which the scheduled and the forced flow differ. "{apps}" stands for the apps that stopped the run,
/// or are configured.
struct AcceptableUseLines {
  struct Stop {
    std::string log;
    std::string summary;  ///< for Jamf Pro
  };
  std::string noAppInForeground;
  std::string noAssertionsConfigured;
  std::string assertionsConfigured;
  Stop foregroundApp;
  Stop assertion;
  Stop camera;
  Stop doNotDisturb;
  Stop screenSharing;
};
extern const AcceptableUseLines scheduledAcceptableUseLines;

/// Goes through the checks, in the order of `AcceptableUse`, up to the first that stops the run; that one is logged and
/// told to Jamf Pro. Nothing when the user may be asked. A check that the Mac can't answer stops nothing. Blocks for 5
/// seconds while it waits for Do Not Disturb. The caller ends its flow.
std::optional<AcceptableUse> checkAcceptableUse(Vorlu& vorlu, const AcceptableUseKeys& keys,
                                                const AcceptableUseLines& lines);

}  // namespace vorlu
