#include "vorlu/prompts/minutes_text.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_messages.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/prompts/update_prompt.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

MessageCase messageCase(const ScheduledPromptInput& input, const ScheduledUpdatesPrefs& prefs) {
  MessageCase which;
  which.apps = input.apps.size();
  which.withList = prefs.appListType == "vertical";
  which.selfService = input.deferralOption == "selfService";
  which.deferralLimit = input.deferralOption == "specifyDeferralLimit";
  which.noDeferrals = input.deferralOption == "disableDeferrals";
  return which;
}

std::string secondButton(const MessageCase& which, const ScheduledUpdatesPrefs& prefs, std::int64_t deferCount) {
  if (which.selfService) return textOr(prefs.customSkipButton, texts::skip);
  if (which.deferralLimit) return countedDeferButton(prefs.customDeferButton, deferCount);
  return textOr(prefs.customDeferButton, texts::defer);
}

MessageWords messageWords(Vorlu& vorlu, const ScheduledPromptInput& input, const MessageCase& which,
                          const ScheduledUpdatesPrefs& prefs) {
  MessageWords words;
  for (const PromptApp& app : input.apps) words.appNames.push_back(app.name);
  words.deferCount = input.deferCount.value_or(0);
  words.updateButton = textOr(prefs.customUpdateButton, texts::update);
  words.deferButton = secondButton(which, prefs, words.deferCount);
  words.gracePeriod = formatMinutes(usableGraceMinutes(prefs.gracePeriodMinutes));
  words.advice = adviceSentences(selfServiceName(vorlu.platform.files));
  return words;
}

/// With one app its own keys count, else those of several.
template <class T>
const T& byCount(const MessageCase& which, const T& ofOne, const T& ofSeveral) {
  return which.apps == 1 ? ofOne : ofSeveral;
}

void setTexts(UpdatePrompt& prompt, const MessageCase& which, const MessageWords& words,
              const ScheduledUpdatesPrefs& prefs) {
  prompt.title = which.apps == 1 ? withWordsReplaced(prefs.singleAppTitle, {{"appName", words.appNames.front()}})
                                 : prefs.multipleAppsTitle;
  const auto& customInitial =
      which.selfService ? byCount(which, prefs.singleSelfServiceQuitMessage, prefs.multipleSelfServiceQuitMessage)
                        : byCount(which, prefs.singleInitialQuitPromptMessage, prefs.multipleInitialQuitPromptMessage);
  prompt.initialMessage = promptMessage(customInitial, initialText(which), words);
  prompt.graceMessage =
      promptMessage(byCount(which, prefs.singleAppGracePeriodQuitMessage, prefs.multipleAppGracePeriodQuitMessage),
                    graceText(which), words);
  prompt.completeMessage =
      promptMessage(std::nullopt, byCount(which, texts::completeOneApp, texts::completeSeveralApps), words);
  prompt.updateButton = words.updateButton;
  prompt.deferButton = words.deferButton;
}

void setSizes(UpdatePrompt& prompt, const MessageCase& which, const ScheduledUpdatesPrefs& prefs) {
  const PromptSizeClass size = promptSizeClass(which.apps);
  const auto& custom = which.selfService ? prefs.customSelfServicePromptSize : prefs.customInitialPromptSize;
  const PromptSizeTable& withDeferrals = which.deferralLimit ? deferralLimitSizes : noLimitSizes;
  prompt.initialSize = promptSize(which.selfService ? selfServiceSizes : withDeferrals, size, which.withList, custom);
  prompt.graceSize = promptSize(which.noDeferrals ? graceWithoutDeferralsSizes : graceSizes, size, which.withList,
                                prefs.customGracePromptSize);
  prompt.compactHead = which.withList && size == PromptSizeClass::small;
}

}  // namespace

UpdatePrompt prepareScheduledPrompt(Vorlu& vorlu, const ScheduledPromptInput& input) {
  const ScheduledUpdatesPrefs& prefs = vorlu.preferences.scheduled();
  const MessageCase which = messageCase(input, prefs);
  UpdatePrompt prompt;
  prompt.selfService = which.selfService;
  setTexts(prompt, which, messageWords(vorlu, input, which, prefs), prefs);
  setSizes(prompt, which, prefs);
  prompt.icon = input.dialogIcon;
  prompt.overlayIcon = initialOverlayIcon(vorlu, prefs.initialPromptOverlayIcon);
  if (which.withList) prompt.appList = appListJson(input.apps, RowStatus::pending);
  prompt.refreshInterval = usableRefreshInterval(prefs.refreshInterval);
  prompt.graceSeconds = usableGraceMinutes(prefs.gracePeriodMinutes) * 60;
  return prompt;
}

}  // namespace vorlu
