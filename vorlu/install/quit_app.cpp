#include "vorlu/install/quit_app.h"

#include <fmt/format.h>

#include "vorlu/state/shell_line.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {

std::string quitApp(Vorlu& vorlu, const std::string& appName) {
  const std::string script = fmt::format(
      "set appName to \"{}\"\n\ntell application appName\n\nwith timeout of 5 seconds\n\nquit\n\nend timeout\n\nend "
      "tell",
      insideAppleScriptText(appName));
  const std::string line = fmt::format("launchctl asuser {} osascript -e \"{}\"", vorlu.platform.consoleUser.uid(),
                                       insideDoubleQuotes(script));
  return runTool(vorlu.platform.processes, vorlu.log, shellCommand(line)).output;
}

}  // namespace vorlu
