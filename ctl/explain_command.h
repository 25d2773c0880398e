#pragma once

#include "ctl/command.h"

namespace vorlu::ctl {

/// `vorluctl explain APP [--json] [--run-scripts]`: why an application would or would not be updated now.
Answer explainCommand(const Arguments& arguments);

}  // namespace vorlu::ctl
