#include "ctl/explain_command.h"

#include <fmt/format.h>

#include <cerrno>

#include "ctl/explain_app.h"
#include "vorlu/platform/linux/linux_platform.h"
#include "vorlu/state/site.h"

namespace vorlu::ctl {

Answer explainCommand(const Arguments& given) {
  Arguments arguments = given;
  const bool asJson = takeFlag(arguments, "--json");
  const bool runScripts = takeFlag(arguments, "--run-scripts");
  for (const std::string& argument : arguments)
    if (argument.starts_with("--")) return {2, fmt::format("vorluctl explain: \"{}\" is no option\n", argument)};
  if (arguments.size() != 1) return {2, "vorluctl explain: name one application, by any key of its catalog entry\n"};
  LinuxPlatform mac;
  const Site site(sealedSite, mac.platform().security);
  const auto explanation = explainApp(mac.platform(), site, arguments[0], runScripts);
  if (!explanation) {
    const int code = explanation.failure().code;
    const char* advice = code == EACCES   ? "; the agent's state is root's, so use sudo"
                         : code == ENOENT ? "; the agent hasn't fetched its catalog yet"
                                          : "";
    return {2, fmt::format("vorluctl explain: {}{}\n", explanation.error(), advice)};
  }
  return {0, asJson ? toJson(*explanation) : toText(*explanation)};
}

}  // namespace vorlu::ctl
