#pragma once

#include <string>

#include "refserver/endpoints.h"

namespace vorlu::refserver {

/// The time of a simulated Mac by its host file, `{"clock": {"real", "mac", "rate"}}`, read anew at each question. A
/// file without a usable clock, or no file, is real time.
ClockFunction hostClock(std::string hostFile);

}  // namespace vorlu::refserver
