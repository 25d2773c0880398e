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

/// What a Mac with this file would hold for the agent: of a configuration profile the list that it delivers, of any other
/// file the file itself. Values of a wrong type throw a DecodingError.
std::string deliveredList(const std::string& bytes);

}  // namespace vorlu::ctl
