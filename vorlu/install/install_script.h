#pragma once

#include <string>
#include <string_view>

#include "vorlu/detection/catalog_script.h"

namespace vorlu {

struct Vorlu;
struct InstallJob;

/// Runs a catalog's script around an install and logs each line of its output as it comes. Neither its status nor a
/// script that never ends, which is killed after 30 minutes, stops the install.
void runInstallScript(Vorlu& vorlu, const std::string& script);

/// The selected app's script before the install, if it has one, and its step of the progress bar.
void runPreInstallScript(InstallJob& job);
/// The same after the install.
void runPostInstallScript(InstallJob& job);

/// A catalog script around an install made ready for its interpreter: as other scripts, with some ends of lines mended.
PreparedScript prepareInstallScript(std::string_view script);

/// The script without the blanks and the semicolon that end a line, since lines are joined with semicolons.
std::string withoutLineSemicolons(std::string_view script);
/// Joined commands with the ends of case branches as they were before lines were joined.
std::string repairedCaseEnds(std::string_view joined);

}  // namespace vorlu
