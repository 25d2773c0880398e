#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlu {

struct Vorlu;

/// Extracts an archive into the emptied Output directory. An archive that can't be read to its end, or that holds a
/// member which may not be unpacked, is logged and leaves Output empty.
void extractArchive(Vorlu& vorlu, const std::string& path);

/// Why a member may not be unpacked, from its line of a verbose listing with numeric owners; nothing when it may.
/// Refused are devices, set-uid and set-gid files, and whatever lies, or points as a link, outside the folder.
std::optional<std::string> refusalOfMember(std::string_view listingLine);

/// Whether a path below a folder, taken by its text, leaves it.
bool leavesFolder(std::string_view relativePath);

}  // namespace vorlu
