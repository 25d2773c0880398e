#pragma once

namespace vorlu {

struct Vorlu;

/// Installs a newer version of the agent when the server offers one that this macOS can run. It takes effect at the
/// next start. Failures are logged and leave everything as it is.
void selfUpdate(Vorlu& vorlu);

}  // namespace vorlu
