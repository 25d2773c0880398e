#include "vorlu/prompts/minutes_text.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_messages.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/prompts/update_prompt.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

MessageWords messageWords(const ForcedPromptInput& input, const ForcedUpdatesPrefs& prefs) {
  MessageWords words;
  words.appNames = {input.app.name};
  words.deferCount = input.deferrals.value_or(0);
  words.updateButton = textOr(prefs.customUpdateButton, texts::update);
  words.deferButton = countedDeferButton(prefs.customDeferButton, words.deferCount);
  words.gracePeriod = formatMinutes(usableGraceMinutes(input.graceMinutes));
  return words;
}

}  // namespace

UpdatePrompt prepareForcedPrompt(Vorlu& vorlu, const ForcedPromptInput& input) {
  const ForcedUpdatesPrefs& prefs = vorlu.preferences.forced();
  const MessageWords words = messageWords(input, prefs);
  UpdatePrompt prompt;
  prompt.title = withWordsReplaced(textOr(prefs.customTitle, texts::forcedTitle), {{"appName", input.app.name}});
  prompt.initialMessage = promptMessage(prefs.initialQuitPromptMessage, texts::forcedInitial, words);
  prompt.graceMessage = promptMessage(prefs.gracePeriodQuitPromptMessage,
                                      input.deferrals ? texts::forcedGrace : texts::forcedWithoutDeferrals, words);
  prompt.completeMessage = promptMessage(std::nullopt, texts::completeOneApp, words);
  prompt.updateButton = words.updateButton;
  prompt.deferButton = words.deferButton;
  prompt.icon = chooseDialogIcon(vorlu, prefs.customIcon);
  prompt.overlayIcon = initialOverlayIcon(vorlu, prefs.initialPromptOverlayIcon);
  prompt.initialSize = promptSize(forcedSizes, PromptSizeClass::small, false, prefs.customInitialPromptSize);
  prompt.graceSize = promptSize(forcedSizes, PromptSizeClass::small, false, prefs.customGracePromptSize);
  prompt.refreshInterval = usableRefreshInterval(prefs.refreshInterval);
  prompt.graceSeconds = usableGraceMinutes(input.graceMinutes) * 60;
  return prompt;
}

}  // namespace vorlu
