#pragma once

#include <string>

#include "vorlu/platform/result.h"

namespace vorlu::refserver {

/// Fills `folder` with the least that a server needs: an inventory of `baseUrl` with random tokens, empty catalogs and
/// manifest, the time stamp 1 and `files/`. Files that are there already stay as they are.
Status makeSampleData(const std::string& folder, const std::string& baseUrl);

/// Makes `now` (seconds since the epoch) the time of the last certificate change: agents that fetched their key
/// material before fetch it anew.
Status renewTimestamp(const std::string& folder, double now);

}  // namespace vorlu::refserver
