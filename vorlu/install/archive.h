#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

struct Vorlu;

/// Extracts an archive into the emptied Output directory; `showProgress`: the bar moves by 5 meanwhile. An archive that
/// can't be read to its end, or that holds a member which may not be unpacked, is logged and leaves Output empty.
bool extractArchive(Vorlu& vorlu, const std::string& path, bool showProgress = false);

/// The same of an archive that lies in the Output directory, beside which its content is put.
bool extractNestedArchive(Vorlu& vorlu, const std::string& item, bool showProgress);

/// Why an unpacked item may not stay; nothing when it may. `path` counts from the folder of the archive, `linkTarget`
/// is a link's. Refused are devices, pipes, set-uid and set-gid files, and links that point, or may point, outside.
std::optional<std::string> refusalOfItem(std::string_view path, const FileInfo& info, std::string_view linkTarget);

/// Whether a path below a folder, taken by its text, leaves it.
bool leavesFolder(std::string_view relativePath);

/// Where an item below a folder lies, with all links followed; nothing when it isn't there or a link leads out of the
/// folder.
std::optional<std::string> placeInside(FileManager& files, const std::string& folder, std::string_view item);

}  // namespace vorlu
