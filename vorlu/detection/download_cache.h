#pragma once

#include <string>
#include <string_view>

#include "vorlu/detection/directory_listings.h"

namespace vorlu {

struct Vorlu;

/// "{appName without blanks}-v{version}": how files of the download cache begin. Characters that can't stand in a file
/// name are replaced.
std::string cacheFileStem(std::string_view appName, std::string_view version);

/// Whether some cached file's name contains the app's name without blanks. A cache that can't be listed is logged.
bool listCacheContains(Vorlu& vorlu, const std::string& appName, DirectoryListings& listings);

/// What a cache that isn't there means to a purge.
enum class MissingCache { fine, logged };

/// Removes every cached installer of an app, of whatever version. An empty name purges nothing.
void purgeCache(Vorlu& vorlu, const std::string& appName, DirectoryListings& listings, MissingCache missing);

/// Removes a file or folder, of which there may be none. What can't be removed is logged and left.
void removeFile(Vorlu& vorlu, const std::string& path);

/// Removes cached files that belong to no pending update.
void cleanCache(Vorlu& vorlu);

}  // namespace vorlu
