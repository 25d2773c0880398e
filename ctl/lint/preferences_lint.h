#pragma once

#include <string>

#include "ctl/lint/finding.h"

namespace vorlu::ctl {

/// Everything that is wrong with the agent's settings in a property list or a configuration profile, XML or binary.
Findings lintPreferences(const std::string& bytes);

}  // namespace vorlu::ctl
