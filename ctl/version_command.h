#pragma once

#include "ctl/command.h"

namespace vorlu::ctl {

/// `vorluctl version`: the agent's version that this program was built with.
Answer versionCommand(const Arguments& arguments);

}  // namespace vorlu::ctl
