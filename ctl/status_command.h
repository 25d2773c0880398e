#pragma once

#include "ctl/command.h"

namespace vorlu::ctl {

/// `vorluctl status [--json]`: what the agent's files tell of its last runs.
Answer statusCommand(const Arguments& arguments);

}  // namespace vorlu::ctl
