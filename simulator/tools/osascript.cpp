#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "simulator/host/host_clock.h"
#include "simulator/tools/apple_script.h"
#include "simulator/tools/application.h"
#include "simulator/tools/tool.h"

namespace vorlu::simulator {

namespace {

constexpr int quitEventMark = 1;  // any value: a queued signal is what an application takes for a quit event

void fail(std::size_t from, std::size_t to, const std::string& text) {
  fmt::print(stderr, "{}:{}: {}\n", from, to, text);
}

// Queued: that tells a quit event from a plain SIGTERM, which ends even an application that ignores the event.
void sendQuit(const std::vector<Process>& processes) {
  for (const auto& process : processes) sigqueue(process.pid, SIGTERM, sigval{quitEventMark});
}

// The application's answer is its end.
bool quit(const QuitEvent& event) {
  const std::size_t end = event.position + std::string_view("quit").size();
  const auto application = applicationNamed(event.application);
  if (!application) {
    fail(event.position, end, fmt::format("execution error: Can’t get application \"{}\". (-1728)", event.application));
    return false;
  }
  const auto stillRuns = [&] { return !processesOf(*application).empty(); };
  sendQuit(processesOf(*application));
  macSleep(event.timeout, [&] { return !stillRuns(); });
  if (!stillRuns()) return true;
  fail(event.position, end,
       fmt::format("execution error: {} got an error: AppleEvent timed out. (-1712)", event.application));
  return false;
}

std::string scriptOf(const Arguments& arguments) {
  std::string script;
  bool given = false;
  for (std::size_t i = 0; i + 1 < arguments.size(); ++i) {
    if (arguments[i] != "-e") continue;
    script += (given ? "\n" : "") + arguments[++i];
    given = true;
  }
  if (given) return script;
  if (!arguments.empty() && arguments[0] != "-") {
    std::ifstream file(arguments[0]);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::string text;
  char block[4096];
  for (ssize_t length = 0; (length = read(STDIN_FILENO, block, sizeof block)) > 0;) {
    text.append(block, static_cast<std::size_t>(length));
  }
  return text;
}

}  // namespace

int runOsascript(const Arguments& arguments) {
  const std::string script = scriptOf(arguments);
  const auto read = readScript(script);
  if (const auto* error = std::get_if<ScriptError>(&read)) {
    fail(error->position, script.size(), "syntax error: " + error->text + " (-2741)");
    return 1;
  }
  for (const auto& event : std::get<std::vector<QuitEvent>>(read)) {
    if (!quit(event)) return 1;
  }
  return 0;
}

}  // namespace vorlu::simulator
