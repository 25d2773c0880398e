#pragma once

#include <map>
#include <optional>
#include <string>

namespace vorlu::simulator {

/// The text values at the top of a property list, XML or binary; nothing when it can't be read.
std::optional<std::map<std::string, std::string>> readTexts(const std::string& path);

/// Rewrites a property list in the binary form; says on standard error why it can't.
bool makeBinary(const std::string& path);

}  // namespace vorlu::simulator
