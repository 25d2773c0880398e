#pragma once

namespace vorlu {

struct Vorlu;

/// Checks for updates and installs what isn't in use, with the rest left in the cache. The manual form ends the run;
/// the hourly one notes when the next is due and returns.
void updateCheckFlow(Vorlu& vorlu, bool hourly);

}  // namespace vorlu
