#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vorlu::simulator {

/// The text values at the top of a property list, XML or binary; nothing when it can't be read.
std::optional<std::map<std::string, std::string>> readTexts(const std::string& path);

/// Rewrites a property list in the binary form; says on standard error why it can't.
bool makeBinary(const std::string& path);

/// Why the file is no property list; nothing when it is one.
std::optional<std::string> lintPlist(const std::string& path);

/// A property list, or JSON without null, as a property list in the XML or the binary form; nothing when it is neither.
std::optional<std::string> convertPlist(const std::string& path, bool binary);

/// An entry as PlistBuddy prints it, by keys and indexes from the top; nothing when there is no such entry. A file that
/// can't be read is an empty dictionary.
std::optional<std::string> plistEntry(const std::string& path, const std::vector<std::string>& keys);

}  // namespace vorlu::simulator
