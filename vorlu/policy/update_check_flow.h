#pragma once

namespace vorlu {

struct Vorlu;

/// Checks for updates and installs what isn't in use, with the rest left in the cache. The hourly form notes when the
/// next is due; after the manual one the caller reports and ends the run.
void updateCheckFlow(Vorlu& vorlu, bool hourly);

}  // namespace vorlu
