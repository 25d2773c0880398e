#include "vorlu/prompts/failure_prompt.h"

#include <fmt/format.h>

#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::int64_t longestStay = 120;  ///< seconds

}  // namespace

FailurePrompt prepareFailurePrompt(Vorlu& vorlu, const std::vector<PromptApp>& failed, const std::string& dialogIcon) {
  const std::string icon = errorIconOr(vorlu, dialogIcon);
  if (failed.size() == 1)
    return {texts::oneFailedTitle, withWordsReplaced(texts::oneFailed, {{"{appName}", failed.front().name}}), icon, ""};
  return {texts::severalFailedTitle, texts::severalFailed, icon, appListJson(failed, RowStatus::fail)};
}

FailurePrompt prepareForcedFailurePrompt(Vorlu& vorlu, const std::string& appName) {
  const std::vector<PromptWord> words = {{"{appName}", appName}};
  return {withWordsReplaced(texts::forcedFailedTitle, words), withWordsReplaced(texts::forcedFailed, words),
          errorIcon(vorlu), ""};
}

void showFailurePrompt(Vorlu& vorlu, const FailurePrompt& prompt) {
  DialogCommand command;
  command.text("--title", prompt.title)
      .text("--message", prompt.message)
      .text("--icon", prompt.icon)
      .word("--quitkey", "u")
      .word("--iconsize", 80)
      .text("--titlefont", "size=16")
      .text("--messagefont", "size=12")
      .text("--button1text", texts::done)
      .flag("--ignorednd")
      .timer(longestStay)
      .flag("--hidetimerbar")
      .flag("--ontop")
      .flag("--moveable");
  if (prompt.appList.empty())
    command.word("--height", 280).word("--width", 600);
  else
    command.json(prompt.appList);
  const PromptExit end = runDialogCommand(vorlu, command);
  if (end.answer == PromptAnswer::button1)
    vorlu.log("User clicked Done");
  else if (end.answer == PromptAnswer::timerRanOut)
    vorlu.log("The updates failed prompt timer ran out.");
  else
    vorlu.log(fmt::format("It looks like the user quit the updates failed prompt. Exit code: {}", end.text));
}

}  // namespace vorlu
