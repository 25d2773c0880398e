// Dialog without a window: a prompt takes its answer from a file, a progress window lives until it is told to quit.

#include <fmt/format.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "simulator/dialog/answers.h"
#include "simulator/dialog/command_file.h"
#include "simulator/host/call_log.h"
#include "simulator/host/host_clock.h"

namespace {

using namespace vorlu::simulator;

constexpr const char* answersPath = "/private/var/db/dialog-answers";
constexpr int timerRanOut = 4;
constexpr int quitByCommand = 5;
constexpr int noDisplay = 20;

struct Prompt {
  std::string commandFile;
  double timer = 0;  // seconds; 0 without one
  bool button1 = false;
  bool button1Disabled = false;
  bool button2 = false;

  bool canBeAnswered() const { return (button1 && !button1Disabled) || button2; }
};

Prompt parse(const std::vector<std::string>& arguments) {
  Prompt prompt;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string value = i + 1 < arguments.size() ? arguments[i + 1] : "";
    if (arguments[i] == "--commandfile") prompt.commandFile = value;
    if (arguments[i] == "--timer") prompt.timer = std::atof(value.c_str());
    if (arguments[i] == "--button1text") prompt.button1 = true;
    if (arguments[i] == "--button1disabled") prompt.button1Disabled = true;
    if (arguments[i] == "--button2text") prompt.button2 = true;
  }
  return prompt;
}

// True when "quit:" came before `seconds` had gone by.
bool waitForQuit(CommandFile& commands, double seconds) {
  bool quit = false;
  macSleep(seconds, [&] {
    for (const auto& line : commands.newLines()) quit = quit || line.starts_with("quit:");
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
  const double wait = answer.exitCode == timerRanOut ? prompt.timer : answer.wait;
  return waitForQuit(commands, wait) ? quitByCommand : answer.exitCode;
}

int showWindow(const Prompt& prompt, CommandFile& commands) {
  const double life = prompt.timer > 0 ? prompt.timer : std::numeric_limits<double>::infinity();
  return waitForQuit(commands, life) ? quitByCommand : timerRanOut;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  logCall("Dialog", arguments);
  const Prompt prompt = parse(arguments);
  CommandFile commands(prompt.commandFile);
  if (access(answersPath, F_OK) != 0) return noDisplay;
  return prompt.canBeAnswered() ? answerPrompt(prompt, commands) : showWindow(prompt, commands);
}
