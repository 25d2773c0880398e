#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Installs a package on the startup volume and logs what the installer says as it says it, each line once in a row.
/// `choicesPath`, when not empty, is the file that chooses among its parts. `quiet` keeps the lines off the console.
/// `showProgress`: the bar moves by 20. Whether the installer says that it worked; what is there then is for others to
/// find out. An installer that doesn't end is killed after 60 minutes.
bool installPackage(Vorlu& vorlu, const std::string& path, const std::string& choicesPath, bool quiet,
                    bool showProgress);

}  // namespace vorlu
