#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Decides whether this run may involve the user, asks, updates what is in use, and leaves the run data ready for the
/// next run. `trigger` is the sub-argument of `--update` in lower case. The status for the end of the run is in
/// `modes.runExitStatus`; a deferral, a skipped Self Service prompt and Self Service without updates end the run.
void scheduledUpdateFlow(Vorlu& vorlu, const std::string& trigger);

}  // namespace vorlu
