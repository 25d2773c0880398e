#include "vorlu/prompts/initial_prompt.h"

#include "vorlu/state/end_run.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

DialogCommand commandOf(const UpdatePrompt& prompt) {
  DialogCommand command;
  command.text("--title", prompt.title)
      .text("--message", prompt.initialMessage)
      .text("--icon", prompt.icon)
      .text("--iconsize", prompt.compactHead ? 60 : 80)
      .text("--button1text", prompt.updateButton)
      .text("--button2text", prompt.deferButton)
      .timer(prompt.refreshInterval)
      .flag("--hidetimerbar")
      .text("--position", "centre/centre")
      .flag("--ontop")
      .flag("--moveable")
      .flag("--ignorednd")
      .text("--titlefont", prompt.compactHead ? "size=18" : "size=16")
      .text("--messagefont", "size=12")
      .word("--quitkey", "u")
      .text("--overlayicon", prompt.overlayIcon)
      .word("--height", prompt.initialSize.height)
      .word("--width", prompt.initialSize.width);
  if (!prompt.appList.empty()) command.json(prompt.appList);
  return command;
}

[[noreturn]] void endSkippedRun(Vorlu& vorlu) {
  setCurrentRunType(vorlu, "N/A");
  vorlu.log("User skipped the Self Service update");
  vorlu.log.logForJamf("User initiated but then skipped the Self Service update");
  runJamfInventory(vorlu);
  vorlu.log("Exiting.");
  exitProcess(0);
}

}  // namespace

PromptExit showInitialPrompt(Vorlu& vorlu, const UpdatePrompt& prompt) {
  const PromptExit answer = runDialogCommand(vorlu, commandOf(prompt));
  switch (answer.answer) {
    case PromptAnswer::button1:
      vorlu.log("Update Selected");
      vorlu.log.logForJamf("User initiated the Update");
      break;
    case PromptAnswer::button2:
      if (prompt.selfService) endSkippedRun(vorlu);
      break;
    case PromptAnswer::timerRanOut:
      vorlu.log("The prompt timer ran out. Refreshing the prompt...");
      break;
    case PromptAnswer::quitUnexpectedly:
      break;
  }
  return answer;
}

}  // namespace vorlu
