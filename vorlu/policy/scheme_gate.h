#pragma once

#include "vorlu/policy/frequency_calculation.h"

namespace vorlu {

struct Vorlu;

/// The last update activity, as this process first read it.
UpdateActivity activityAtStart(Vorlu& vorlu);

/// Whether the patch day or the run frequency lets this run ask the user. Logs its reason; false ends the flow with 0.
/// Writes or removes the missed update receipt on the way, and may wait 40 seconds for new profiles.
bool passesSchemeGate(Vorlu& vorlu);

}  // namespace vorlu
