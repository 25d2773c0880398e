#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Removes the Output directory's content and one file of the cache. What can't be removed is logged and left.
void removeDownloads(Vorlu& vorlu, const std::string& downloadPath);

/// Removes one item. One that can't be removed is logged and left.
void removeItem(Vorlu& vorlu, const std::string& path);

/// Removes the Output directory's content alone.
void emptyOutput(Vorlu& vorlu);

}  // namespace vorlu
