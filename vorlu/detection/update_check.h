#pragma once

#include <string>

namespace vorlu {

struct AppBlueprints;
struct Vorlu;

/// Walks the catalog and fills `updates`. With an app's name only that app is looked at. `refreshOnly` looks at every
/// entry, allowed or not, to bring the inventory file up to date. May end the run through the catalog.
void checkForUpdates(Vorlu& vorlu, const std::string& appName, bool refreshOnly);

/// Whether the app of this entry is installed and outdated. Changes nothing.
bool needsUpdate(Vorlu& vorlu, const AppBlueprints& entry);

/// Stores the date of now as `LastCompliant`.
void recordCompliance(Vorlu& vorlu);

}  // namespace vorlu
