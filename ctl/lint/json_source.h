#pragma once

#include <optional>
#include <string_view>

#include "ctl/lint/finding.h"

namespace vorlu::ctl {

/// Reads a JSON document. Nothing, with one error that names the place, when it is none. Keys that come twice in one
/// object are findings.
std::optional<LocatedValue> readLocatedJson(std::string_view text, Findings& findings);

}  // namespace vorlu::ctl
