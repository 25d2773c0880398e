// sim-tools: the stand-ins of the simulated Mac that are programs, not scripts. Called by its own name it does what the
// scripts need: `log-call NAME ARGUMENT…`, `log-note NAME TEXT`, `now`, `wait SECONDS`, `binary-plist FILE`,
// `plist-text FILE KEY`.

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <string>

#include "simulator/host/call_log.h"
#include "simulator/host/host_clock.h"
#include "simulator/tools/plist.h"
#include "simulator/tools/tool.h"

namespace {

using vorlu::simulator::Arguments;

// Prints a text of a property list; false, and nothing printed, without one.
int printText(const std::string& path, const std::string& key) {
  const auto texts = vorlu::simulator::readTexts(path);
  if (!texts || !texts->contains(key)) return 1;
  fmt::print("{}\n", texts->at(key));
  return 0;
}

int help(const Arguments& arguments) {
  const std::string verb = arguments.empty() ? "" : arguments[0];
  if (verb == "log-call" && arguments.size() >= 2) {
    vorlu::simulator::logCall(arguments[1], {arguments.begin() + 2, arguments.end()});
    return 0;
  }
  if (verb == "log-note" && arguments.size() == 3) {
    vorlu::simulator::logNote(arguments[1], arguments[2]);
    return 0;
  }
  if (verb == "now") {
    fmt::print("{:.0f}\n", std::floor(vorlu::simulator::HostClock::read().now()));
    return 0;
  }
  if (verb == "wait" && arguments.size() == 2) {
    vorlu::simulator::macSleep(std::atof(arguments[1].c_str()));
    return 0;
  }
  if (verb == "binary-plist" && arguments.size() == 2) return vorlu::simulator::makeBinary(arguments[1]) ? 0 : 1;
  if (verb == "plist-text" && arguments.size() == 3) return printText(arguments[1], arguments[2]);
  fmt::print(stderr,
             "usage: sim-tools log-call NAME ARGUMENT... | log-note NAME TEXT | now | wait SECONDS | binary-plist FILE "
             "| plist-text FILE KEY\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace vorlu::simulator;
  static const std::map<std::string, int (*)(const Arguments&)> tools = {
      {"date", runDate},           {"killall", runKillall},       {"launchd", runLaunchd}, {"open", runOpen},
      {"osascript", runOsascript}, {"pgrep", runPgrep},           {"ps", runPs},           {"sleep", runSleep},
      {"plutil", runPlutil},       {"PlistBuddy", runPlistBuddy},
  };
  const std::string path = argv[0];
  const std::string name = path.substr(path.rfind('/') + 1);
  const Arguments arguments(argv + 1, argv + argc);
  const auto tool = tools.find(name);
  if (tool == tools.end()) return help(arguments);
  if (name != "launchd") logCall(name, arguments);
  return tool->second(arguments);
}
