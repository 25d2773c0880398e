#include "vorlu/prompts/cancel_prompt.h"

#include <map>

#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

struct CancelTexts {
  const char* title;
  const char* message;
};

const CancelTexts& textsOf(CancelReason reason) {
  static const std::map<CancelReason, CancelTexts> rows = {
      {CancelReason::notInCatalog, {texts::installCancelledTitle, texts::notInCatalog}},
      {CancelReason::notEnabled, {texts::installCancelledTitle, texts::notEnabled}},
      {CancelReason::alreadyInstalled, {texts::installCancelledTitle, texts::alreadyInstalled}},
      {CancelReason::installFailed, {texts::installFailedTitle, texts::installFailed}},
  };
  return rows.at(reason);
}

std::string cancelIcon(Vorlu& vorlu) {
  return errorIconOr(vorlu, chooseDialogIcon(vorlu, vorlu.preferences.scheduled().customIcon));
}

}  // namespace

CancelPrompt prepareCancelPrompt(Vorlu& vorlu, CancelReason reason, const std::string& appName) {
  CancelPrompt prompt;
  prompt.title = textsOf(reason).title;
  prompt.message = withWordsReplaced(textsOf(reason).message, {{"{appName}", appName}});
  prompt.icon = cancelIcon(vorlu);
  return prompt;
}

CancelPrompt prepareCancelPrompt(Vorlu& vorlu, const std::string& reason) {
  CancelPrompt prompt;
  prompt.title = texts::installCancelledTitle;
  prompt.message = reason;
  prompt.icon = cancelIcon(vorlu);
  return prompt;
}

void showCancelPrompt(Vorlu& vorlu, const CancelPrompt& prompt) {
  DialogCommand command;
  command.flag("--mini").flag("--ontop").word("--position", prompt.position).flag("--moveable");
  if (prompt.overlayIcon) command.text("--overlayicon", *prompt.overlayIcon);
  command.word("--quitkey", "u")
      .flag("--ignorednd")
      .text("--title", prompt.title)
      .text("--icon", prompt.icon)
      .text("--message", prompt.message)
      .text("--button1text", texts::ok);
  runUnansweredPrompt(vorlu, command);
}

}  // namespace vorlu
