#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Reads the version of the selected app after an update, where `path` or else the catalog says it is, and logs what
/// became of it. False when it is `previousVersion` still or can't be read.
bool verifyInstalledVersion(Vorlu& vorlu, const std::string& path, const std::string& previousVersion,
                            const std::string& displayName);

/// Whether the selected app is installed in the version that the catalog has, or a newer one.
bool isLatestInstalled(Vorlu& vorlu);

}  // namespace vorlu
