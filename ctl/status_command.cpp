#include "ctl/status_command.h"

#include <fmt/format.h>

#include "ctl/agent_status.h"
#include "vorlu/platform/linux/linux_platform.h"
#include "vorlu/state/json.h"
#include "vorlu/state/site.h"

namespace vorlu::ctl {

Answer statusCommand(const Arguments& given) {
  Arguments arguments = given;
  const bool asJson = takeFlag(arguments, "--json");
  if (!arguments.empty()) return {2, fmt::format("vorluctl status: \"{}\" is no option\n", arguments[0])};
  LinuxPlatform mac;
  const Site site(sealedSite, mac.platform().security);
  const AgentStatus status = readStatus(mac.platform(), site);
  return {0, asJson ? encodeJson(status, JsonLayout::pretty) + "\n" : toText(status)};
}

}  // namespace vorlu::ctl
