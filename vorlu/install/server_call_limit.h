#pragma once

#include <cstdint>

#include "vorlu/state/run_data.h"

namespace vorlu {

struct Vorlu;

/// Whether a day has gone by since the count of look-ups began anew. A beginning that lies in the future is none.
bool serverCallsExpired(const RunDataFile& file, std::int64_t now);
/// The count after one more look-up on the server; nothing when the day's ten are used up.
std::optional<std::int64_t> countWithOneMore(const RunDataFile& file);

/// Counts a look-up of an unknown app on the server, of which a computer has ten a day. False, with a line in the log,
/// when none is left.
bool takeServerCall(Vorlu& vorlu);

}  // namespace vorlu
