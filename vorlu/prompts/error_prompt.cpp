#include "vorlu/prompts/error_prompt.h"

#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_position.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void showErrorPrompt(Vorlu& vorlu, ErrorFlavour flavour, std::string_view code) {
  if (flavour == ErrorFlavour::none) return;
  const bool install = flavour == ErrorFlavour::install;
  vorlu.log("Displaying error prompt to the user...");
  const std::string position =
      validatedPromptPosition(vorlu.log, install ? vorlu.preferences.scheduled().updateProgressPosition
                                                 : vorlu.preferences.forced().updateProgressPosition);
  DialogCommand command;
  command.flag("--mini")
      .flag("--ontop")
      .word("--position", position)
      .flag("--moveable")
      .word("--quitkey", "u")
      .flag("--ignorednd")
      .text("--title", texts::unexpectedErrorTitle)
      .text("--icon", errorIcon(vorlu))
      .text("--message", withWordsReplaced(install ? texts::noInstallsPossible : texts::noUpdatesPossible,
                                           {{"{code}", std::string(code)}}))
      .text("--button1text", texts::ok);
  launchPrompt(vorlu, command);
}

}  // namespace vorlu
