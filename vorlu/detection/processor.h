#pragma once

#include <string>

#include "vorlu/platform/device.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/server/current_app.h"

namespace vorlu {

enum class Processor { intel, silicon, unknown };

/// Asks the computer.
Processor processor(Device& device);
/// "Intel", "Silicon" or "unknown".
std::string cpuType(Device& device);

/// The version of the catalog that counts on this processor: the processor's own where the entry has both, else
/// `latestVersion`; empty when there is none. Names of cached files carry it.
const std::string& effectiveLatestVersion(const AppBlueprints& entry, Processor processor);
const std::string& effectiveLatestVersion(const CurrentApp& app, Processor processor);

/// Whether the catalog says of an app built per processor that there is none for this one: a URL that is there but
/// empty.
bool lacksBuild(const AppBlueprints& entry, Processor processor);

}  // namespace vorlu
