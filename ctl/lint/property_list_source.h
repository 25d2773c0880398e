#pragma once

#include <optional>
#include <string_view>

#include "ctl/lint/finding.h"

namespace vorlu::ctl {

/// Reads an XML or binary property list; values of a binary one have no place. Nothing, with one error, when it is
/// none. Keys that come twice in one dictionary are findings.
std::optional<LocatedValue> readLocatedPropertyList(std::string_view bytes, Findings& findings);

}  // namespace vorlu::ctl
