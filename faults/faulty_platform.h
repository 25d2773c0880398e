#pragma once

#include "vorlu/platform/platform.h"

namespace vorlu::faults {

/// The same Mac with other files, children, transfers and keychain.
inline Platform faultyPlatform(const Platform& mac, FileManager& files, Processes& processes, UrlSession& urls,
                               Keychain& keychain) {
  return {mac.clock,       files,       processes,  urls,        mac.security, keychain,
          mac.consoleUser, mac.device,  mac.power,  mac.cameras, mac.focus,    mac.applications,
          mac.systemLog,   mac.console, mac.webView};
}

}  // namespace vorlu::faults
