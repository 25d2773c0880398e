#pragma once

#include <string>
#include <vector>

#include "ctl/lint/finding.h"

namespace vorlu::ctl {

/// The agent's settings in a file.
struct SettingsInFile {
  LocatedValue value;
  std::string path;  ///< of the dictionary that holds them
};

/// Finds the settings: the list itself, or the payloads of a configuration profile, as a payload of the preference
/// domain or as a custom settings payload that forces the domain. Profiles without them are findings.
std::vector<SettingsInFile> settingsOf(const LocatedValue& root, Findings& findings);

}  // namespace vorlu::ctl
