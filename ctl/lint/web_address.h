#pragma once

#include <string_view>

#include "ctl/lint/record_lint.h"

namespace vorlu::ctl {

/// Blanks in the URLs of downloads are sent as "%20"; those of pages aren't.
enum class BlanksInURL { allowed, broken };

/// A URL that can be asked, best over TLS. An empty one isn't looked at.
void checkWebAddress(RecordLint& lint, std::string_view key, std::string_view url, BlanksInURL blanks);

}  // namespace vorlu::ctl
