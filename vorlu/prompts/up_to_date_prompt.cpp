#include "vorlu/prompts/up_to_date_prompt.h"

#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::int64_t longestStay = 20;  ///< seconds, which the message names

DialogCommand commandOf(const std::string& icon) {
  DialogCommand command;
  command.word("--height", 250)
      .word("--width", 500)
      .text("--title", texts::upToDateTitle)
      .text("--message", texts::nothingPending)
      .text("--icon", icon)
      .word("--quitkey", "u")
      .word("--iconsize", 80)
      .text("--titlefont", "size=16")
      .text("--messagefont", "size=12")
      .text("--button1text", texts::done)
      .flag("--ignorednd")
      .timer(longestStay)
      .flag("--moveable");
  return command;
}

const char* endInWords(PromptAnswer answer) {
  if (answer == PromptAnswer::button1)
    return "Displayed the prompt to advise no updates are required. User acknowledged";
  if (answer == PromptAnswer::timerRanOut)
    return "Displayed the prompt to advise no updates are required. The timer on the prompt ran out";
  return "Displayed the prompt to advise no updates are required. The prompt exited unexpectedly";
}

}  // namespace

void showUpToDatePrompt(Vorlu& vorlu, const std::string& dialogIcon, const std::function<void()>& resetDeferrals) {
  setCurrentRunType(vorlu, "N/A");
  vorlu.log(endInWords(runDialogCommand(vorlu, commandOf(dialogIcon)).answer));
  vorlu.log.logForJamf("User initiated a Self Service update check but no updates were required");
  runJamfInventory(vorlu);
  if (resetDeferrals) resetDeferrals();
  vorlu.log("Exiting...");
  exitProcess(0);  // the run type may be another agent's by now
}

}  // namespace vorlu
