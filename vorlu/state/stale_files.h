#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Whether a name is that of a file under way, which gets its own name when it is whole.
bool isUnderWay(const std::string& name);

/// Removes what processes that died have left of files under way in this folder. An agent beside this one may have one,
/// too, so it goes only when it is a day old. A failure is logged.
void removeStaleFiles(Vorlu& vorlu, const std::string& folder);

}  // namespace vorlu
