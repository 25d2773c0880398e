#pragma once

#include <string_view>

namespace vorlu {

/// NSString's comparison with the numeric option: -1, 0 or 1 as `latest` orders before, with or after `installed`. Runs
/// of digits compare as numbers of any length, all else by UTF-16 code unit.
int compareVersions(std::string_view latest, std::string_view installed);

}  // namespace vorlu
