#pragma once

#include <optional>
#include <string>

#include "vorlu/server/current_app.h"

namespace vorlu {

struct Vorlu;

/// Which build of an app is wanted.
enum class DownloadCase { universal, intel, appleSilicon };

/// The installer's URL for one build of the selected app: fixed, or looked up. Nothing, logged, when a look-up fails.
std::optional<std::string> resolveDownloadURL(Vorlu& vorlu, DownloadCase build);

}  // namespace vorlu
