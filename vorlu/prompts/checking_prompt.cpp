#include "vorlu/prompts/checking_prompt.h"

#include <fmt/format.h>

#include <chrono>

#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds timeToClose{3000};
constexpr milliseconds betweenLooks{200};

}  // namespace

std::optional<pid_t> showCheckingPrompt(Vorlu& vorlu, const std::string& dialogIcon) {
  DialogCommand command;
  command.word("--height", 185)
      .word("--width", 400)
      .text("--title", texts::checkingTitle)
      .text("--message", texts::checking)
      .text("--icon", dialogIcon)
      .word("--quitkey", "u")
      .word("--iconsize", 61)
      .text("--titlefont", "size=18")
      .text("--messagefont", "size=15")
      .text("--button1text", texts::pleaseWait)
      .flag("--button1disabled")
      .flag("--ontop")
      .flag("--ignorednd")
      .flag("--moveable")
      .text("--listitem", texts::pleaseWait);
  notePrompt(vorlu);
  const auto prompt = launchPrompt(vorlu, command);
  vorlu.platform.clock.sleep(std::chrono::seconds(1));
  writeDialogCommand(vorlu, fmt::format("listitem: {}: wait", texts::pleaseWait));
  return prompt;
}

void closeCheckingPrompt(Vorlu& vorlu, const std::optional<pid_t>& prompt) {
  writeDialogCommand(vorlu, "quit:");
  if (!prompt) return;
  for (milliseconds waited{0}; waited < timeToClose; waited += betweenLooks) {
    if (!vorlu.platform.processes.isAlive(*prompt)) return;
    vorlu.platform.clock.sleep(betweenLooks);
  }
  killPrompts(vorlu);
}

}  // namespace vorlu
