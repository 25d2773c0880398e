#pragma once

#include <string_view>

#include "ctl/lint/record_lint.h"

namespace vorlu::ctl {

/// A SHA-256 as it is compared: 64 lower-case hexadecimal digits. An empty one isn't looked at.
void checkHashText(RecordLint& lint, std::string_view key, std::string_view hash);

}  // namespace vorlu::ctl
