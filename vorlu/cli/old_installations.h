#pragma once

namespace vorlu {

struct Vorlu;

/// Removes, where they exist, the files of older versions and of the management tool that came with them.
void removeOldInstallations(Vorlu& vorlu);

}  // namespace vorlu
