// Dialog: a prompt takes its answer from a file or from a person at a window; a progress window lives until it is told
// to quit.

#include <fmt/format.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "simulator/dialog/answers.h"
#include "simulator/dialog/command.h"
#include "simulator/dialog/command_file.h"
#include "simulator/dialog/prompt.h"
#include "simulator/dialog/window_library.h"
#include "simulator/host/call_log.h"
#include "simulator/host/host_clock.h"

namespace {

using namespace vorlu::simulator;

constexpr const char* answersPath = "/private/var/db/dialog-answers";

// True when "quit:" came before `seconds` had gone by.
bool waitForQuit(CommandFile& commands, double seconds) {
  bool quit = false;
  macSleep(seconds, [&] {
    for (const auto& line : commands.newLines()) quit = quit || parseCommand(line).kind == Command::Kind::quit;
    return quit;
  });
  return quit;
}

// A window that nobody answered ends as a program that crashed, without a core file.
[[noreturn]] void crash(const char* why) {
  logNote("Dialog", why);
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  std::abort();
}

int answerPrompt(const Prompt& prompt, CommandFile& commands) {
  const auto taken = takeAnswer(answersPath);
  if (const auto* none = std::get_if<NoAnswer>(&taken)) {
    crash(*none == NoAnswer::runOut ? "the answers have run out" : "the answer could not be taken or read");
  }
  const Answer answer = std::get<Answer>(taken);
  const double wait = answer.exitCode == ending::timerRanOut ? prompt.timer : answer.wait;
  return waitForQuit(commands, wait) ? ending::quit : answer.exitCode;
}

int pretendWindow(const Prompt& prompt, CommandFile& commands) {
  const double life = prompt.timer > 0 ? prompt.timer : std::numeric_limits<double>::infinity();
  return waitForQuit(commands, life) ? ending::quit : ending::timerRanOut;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  logCall("Dialog", arguments);
  if (arguments.empty()) {
    // Opened like an application, or brought forward a moment too late.
    fmt::print(stderr, "Dialog: there is nothing to show\n");
    return ending::quit;
  }
  std::vector<std::string> complaints;
  const Prompt prompt = parsePrompt(arguments, complaints);
  for (const auto& complaint : complaints) fmt::print(stderr, "Dialog: {}\n", complaint);
  CommandFile commands(prompt.commandFile);
  if (access(answersPath, F_OK) != 0) return showInWindow(prompt, commands);
  return prompt.canBeAnswered() ? answerPrompt(prompt, commands) : pretendWindow(prompt, commands);
}
