#pragma once

#include <string>
#include <vector>

namespace vorlu {

struct Vorlu;

/// Adds the names of the selected app's programs to `appBinaries`: its blocking apps, or else what its bundle holds.
void listAppBinaries(Vorlu& vorlu, const std::string& appPath);

/// Whether an application runs. The names of `processWatchList` go before the bundle identifier; the hit is kept in
/// `foundProcess`.
bool isAppRunning(Vorlu& vorlu, const std::string& bundleIdentifier, const std::string& appName);

/// Ids of the processes of exactly this name, as `pgrep` prints them; empty when there are none.
std::string findProcess(Vorlu& vorlu, const std::string& name);
/// The same as a list.
std::vector<std::string> processIds(Vorlu& vorlu, const std::string& name);

/// Whether the selected app, installed at `installedPath`, is in use. Sets up the lists for it anew.
bool isSelectedAppRunning(Vorlu& vorlu, const std::string& installedPath, const std::string& appName);

/// Ends the selected app, which ran while it was updated, and opens it again for the console user.
void relaunchApp(Vorlu& vorlu);

}  // namespace vorlu
