// vorluctl: what administrators and authors of catalogs ask about a catalog, a profile or this Mac. It changes nothing
// and needs no root.

#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <exception>

#include "ctl/command.h"
#include "ctl/explain_command.h"
#include "ctl/lint/lint_command.h"
#include "ctl/status_command.h"
#include "ctl/timeline_command.h"
#include "ctl/version_command.h"

namespace {

using namespace vorlu::ctl;

constexpr std::array commands{
    Command{"lint-catalog", "FILE [--json]", lintCatalogCommand},
    Command{"lint-prefs", "FILE [--json]", lintPrefsCommand},
    Command{"explain", "APP [--json] [--run-scripts]", explainCommand},
    Command{"status", "[--json]", statusCommand},
    Command{"timeline",
            "--prefs FILE [--days N] [--answers update,defer,ignore,quit] [--start \"YYYY-MM-DD HH:MM\"]\n"
            "                    [--hours HH:MM-HH:MM] [--release-every DAYS] [--json]",
            timelineCommand},
    Command{"version", "", versionCommand},
};

std::string usageText() {
  std::string text = "usage:\n";
  for (const Command& command : commands) {
    text += fmt::format("  vorluctl {}{}{}\n", command.name, command.usage.empty() ? "" : " ", command.usage);
  }
  return text + "  vorluctl help\n";
}

Answer answer(const Arguments& arguments) {
  if (arguments.empty() || arguments[0] == "help" || arguments[0] == "--help" || arguments[0] == "-h") {
    return {arguments.empty() ? 2 : 0, usageText()};
  }
  for (const Command& command : commands) {
    if (arguments[0] == command.name) return command.run(Arguments(arguments.begin() + 1, arguments.end()));
  }
  return {2, fmt::format("vorluctl: there is no command \"{}\"\n{}", arguments[0], usageText())};
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Answer given = answer(Arguments(argv + 1, argv + argc));
    fmt::print(given.status == 2 ? stderr : stdout, "{}", given.text);
    return given.status;
  } catch (const std::exception& fault) {
    fmt::print(stderr, "vorluctl: {}\n", fault.what());
    return 2;
  }
}
