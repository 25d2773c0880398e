#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Tells in the log whether the selected app, newly installed at `path`, has the version that the catalog calls the
/// latest. Only that: an installer that is ahead of its catalog entry is no failure.
void checkForVersionMismatch(Vorlu& vorlu, const std::string& path);

}  // namespace vorlu
