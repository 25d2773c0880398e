#include "ctl/version_command.h"

#include <fmt/format.h>

#include "vorlu/state/agent_version.h"

namespace vorlu::ctl {

Answer versionCommand(const Arguments&) {
  return {0, fmt::format("{}\n", agentVersion)};
}

}  // namespace vorlu::ctl
