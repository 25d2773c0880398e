#include "vorlu/prompts/dialog_invocation.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/shell_line.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

constexpr seconds overtime = std::chrono::minutes(2);
constexpr seconds noLimit = std::chrono::hours(24 * 365);
constexpr int refreshSeconds = 60;

struct ExitCode {
  std::string_view text;
  PromptAnswer answer;
};
constexpr std::array exitCodes = {ExitCode{"0", PromptAnswer::button1}, ExitCode{"2", PromptAnswer::button2},
                                  ExitCode{"4", PromptAnswer::timerRanOut}};

Command shellCommandOf(const std::string& line, const std::optional<std::int64_t>& timer) {
  Command command = shellCommand(line);
  command.mergeStandardError = false;
  command.limit = timer ? seconds(*timer) + overtime : noLimit;
  return command;
}

void bringToFront(Vorlu& vorlu, std::string_view message) {
  vorlu.log(message);
  openAsConsoleUser(vorlu, "-a ", paths::dialogProgram);
}

/// Waits for a prompt that has been started. A prompt that has ended isn't opened again.
ProcessResult waitWithRefresh(Vorlu& vorlu, RunningProcess& prompt) {
  for (int second = 1;; ++second) {
    vorlu.platform.clock.sleep(seconds(1));
    if (!prompt.isRunning()) return prompt.wait();
    if (second == 1) bringToFront(vorlu, "Bringing the grace period prompt to the foreground...");
    if (second % refreshSeconds == 0) bringToFront(vorlu, "Refreshing the grace period prompt to the foreground...");
  }
}

/// A prompt that this process waits for.
class NotedPrompt {
 public:
  explicit NotedPrompt(Vorlu& vorlu) : vorlu_(vorlu) { notePrompt(vorlu_); }
  ~NotedPrompt() { forgetPrompt(vorlu_); }
  NotedPrompt(const NotedPrompt&) = delete;
  NotedPrompt& operator=(const NotedPrompt&) = delete;

 private:
  Vorlu& vorlu_;
};

}  // namespace

DialogCommand& DialogCommand::flag(std::string_view name) {
  flags_ += fmt::format(" {}", name);
  return *this;
}

DialogCommand& DialogCommand::text(std::string_view name, std::string_view value) {
  std::string whole(value);
  std::erase(whole, '\0');  // a command line would end there
  flags_ += fmt::format(" {} \"{}\"", name, insideDoubleQuotes(whole));
  return *this;
}

DialogCommand& DialogCommand::text(std::string_view name, std::int64_t value) {
  flags_ += fmt::format(" {} \"{}\"", name, value);
  return *this;
}

DialogCommand& DialogCommand::word(std::string_view name, std::string_view value) {
  flags_ += fmt::format(" {} {}", name, shellWord(value));
  return *this;
}

DialogCommand& DialogCommand::word(std::string_view name, std::int64_t value) {
  flags_ += fmt::format(" {} {}", name, value);
  return *this;
}

DialogCommand& DialogCommand::json(std::string_view document) {
  flags_ += fmt::format(" --jsonstring '{}'", insideSingleQuotes(document));
  return *this;
}

DialogCommand& DialogCommand::timer(std::int64_t limit) {
  timer_ = limit;
  return text("--timer", limit);
}

std::string DialogCommand::line() const {
  return fmt::format("\"{}\" --commandfile {}{}", paths::dialogProgram, paths::dialogCommandFile, flags_);
}

std::string DialogCommand::foregroundLine() const {
  return line() + " 2>/dev/null;print $?";
}

std::string DialogCommand::backgroundLine(std::string_view receiptPath) const {
  return fmt::format("{}&> /dev/null;print $? > \"{}\"", line(), insideDoubleQuotes(receiptPath));
}

PromptExit readPromptExit(std::string_view output) {
  PromptExit prompt;
  if (isUtf8(output)) prompt.text = trimmed(output);
  const auto* known = std::find_if(exitCodes.begin(), exitCodes.end(),
                                   [&prompt](const ExitCode& code) { return code.text == prompt.text; });
  if (known != exitCodes.end()) prompt.answer = known->answer;
  return prompt;
}

PromptExit runDialogCommand(Vorlu& vorlu, const DialogCommand& command, ForegroundRefresh refresh) {
  const NotedPrompt noted(vorlu);
  const Command shell = shellCommandOf(command.foregroundLine(), command.timerSeconds());
  const auto prompt = vorlu.platform.processes.start(shell);
  const ProcessResult result =
      refresh == ForegroundRefresh::everyMinute ? waitWithRefresh(vorlu, *prompt) : prompt->wait();
  logToolFailure(vorlu.log, shell, result);
  return readPromptExit(result.timedOut ? "" : result.output);  // a killed prompt has agreed to nothing
}

void runUnansweredPrompt(Vorlu& vorlu, const DialogCommand& command) {
  const NotedPrompt noted(vorlu);
  runTool(vorlu.platform.processes, vorlu.log, shellCommandOf(command.line(), command.timerSeconds()));
}

std::optional<pid_t> launchPrompt(Vorlu& vorlu, const DialogCommand& command) {
  return vorlu.platform.processes.launch(shellCommand(command.foregroundLine()));
}

void killPrompts(Vorlu& vorlu) {
  static const std::string name = paths::dialogProgram.substr(paths::dialogProgram.rfind('/') + 1);
  runShell(vorlu, fmt::format("killall {}", shellWord(name)));
}

}  // namespace vorlu
