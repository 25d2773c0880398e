#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Speed of the network downwards in megabits per second, from the measurement that lies in networkQuality.json. Always
/// above 0; without a measurement a plausible one. Read once in a run.
int networkSpeed(Vorlu& vorlu);

/// Measures anew into networkQuality.json, which takes the tool up to half a minute.
void recordNetworkQuality(Vorlu& vorlu);

/// Measures for the log: the capacity downwards as the tool words it. Empty, logged, when there is no measurement.
std::string measureNetworkQuality(Vorlu& vorlu);

}  // namespace vorlu
