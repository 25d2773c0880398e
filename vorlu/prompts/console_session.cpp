#include "vorlu/prompts/console_session.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "vorlu/detection/placeholders.h"
#include "vorlu/state/shell_line.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// Names that the console bears while nobody is logged in.
constexpr std::array<std::string_view, 4> nobody = {"", "root", "loginwindow", "Unknown"};

}  // namespace

bool somebodyAtConsole(Vorlu& vorlu) {
  return std::find(nobody.begin(), nobody.end(), consoleUserName(vorlu)) == nobody.end();
}

void runShell(Vorlu& vorlu, std::string line, std::chrono::seconds grace) {
  Command command = shellCommand(std::move(line));
  command.grace = grace;
  runTool(vorlu.platform.processes, vorlu.log, command);
}

std::string asConsoleUser(Vorlu& vorlu, std::string_view line) {
  return fmt::format("su {} -c '{}'", shellWord(consoleUserName(vorlu)), insideSingleQuotes(line));
}

void openAsConsoleUser(Vorlu& vorlu, std::string_view options, const std::string& item, std::chrono::seconds grace) {
  if (!somebodyAtConsole(vorlu)) return;
  runShell(vorlu, asConsoleUser(vorlu, fmt::format("open {}\"{}\"", options, insideDoubleQuotes(item))), grace);
}

}  // namespace vorlu
