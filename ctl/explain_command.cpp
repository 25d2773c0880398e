#include "ctl/explain_command.h"

#include <fmt/format.h>

#include "ctl/explain_app.h"
#include "vorlu/platform/linux/linux_platform.h"
#include "vorlu/state/site.h"

namespace vorlu::ctl {

Answer explainCommand(const Arguments& given) {
  Arguments arguments = given;
  const bool asJson = takeFlag(arguments, "--json");
  const bool runScripts = takeFlag(arguments, "--run-scripts");
  if (arguments.size() != 1) return {2, "vorluctl explain: name one application, by any key of its catalog entry\n"};
  LinuxPlatform mac;
  const Site site(sealedSite, mac.platform().security);
  const auto explanation = explainApp(mac.platform(), site, arguments[0], runScripts);
  if (!explanation) {
    const bool denied = explanation.failure().code == EACCES;
    return {2, fmt::format("vorluctl explain: {}{}\n", explanation.error(),
                           denied ? "; the agent's state is root's, so use sudo" : "")};
  }
  return {0, asJson ? toJson(*explanation) : toText(*explanation)};
}

}  // namespace vorlu::ctl
