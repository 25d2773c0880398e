#include "vorlu/prompts/grace_prompt.h"

#include <fmt/format.h>

#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

DialogCommand commandOf(const UpdatePrompt& prompt) {
  DialogCommand command;
  command.text("--title", prompt.title)
      .text("--message", prompt.graceMessage)
      .text("--icon", prompt.icon)
      .text("--iconsize", 80)
      .text("--button1text", prompt.updateButton)
      .timer(prompt.graceSeconds)
      .text("--position", "centre/centre")
      .flag("--moveable")
      .flag("--ignorednd")
      .text("--titlefont", "size=16")
      .text("--messagefont", "size=12")
      .word("--quitkey", "u")
      .text("--overlayicon", prompt.overlayIcon)
      .word("--height", prompt.graceSize.height)
      .word("--width", prompt.graceSize.width);
  if (!prompt.appList.empty()) command.json(prompt.appList);
  return command;
}

}  // namespace

void showGracePrompt(Vorlu& vorlu, const UpdatePrompt& prompt) {
  const PromptExit end = runDialogCommand(vorlu, commandOf(prompt), ForegroundRefresh::everyMinute);
  switch (end.answer) {
    case PromptAnswer::button1:
      vorlu.log("Update Selected");
      vorlu.log.logForJamf("User initiated the Update");
      return;
    case PromptAnswer::timerRanOut:
      vorlu.log("The grace period timer ran out");
      vorlu.log.logForJamf("The grace period timer ran out. Initialising Update...");
      return;
    case PromptAnswer::button2:
    case PromptAnswer::quitUnexpectedly:
      vorlu.log(fmt::format("Error: The grace period prompt quit unexpectedly. Exit code: {}", end.text));
      vorlu.log.logForJamf(
          fmt::format("The grace period prompt quit unexpectedly with exit code {}. Initialising Update...", end.text));
  }
}

}  // namespace vorlu
