#pragma once

namespace vorlu {

struct Vorlu;

/// What the agent's installer calls once: key material, a first measurement of the network, the state of older
/// versions in its new place, the components and, on Apple Silicon, Rosetta. Ends the run with 1 when the key material
/// can't be had.
void firstInstallInitialise(Vorlu& vorlu);

}  // namespace vorlu
