#include "vorlu/prompts/prompt_messages.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"

namespace vorlu {
namespace {

/// The first ending that so many apps reach; tables go from many to few.
template <class Endings>
std::string endingFor(std::size_t apps, const Endings& endings) {
  const auto* found = std::find_if(endings.begin(), endings.end(),
                                   [apps](const texts::ListEnding& ending) { return apps >= ending.atLeast; });
  return found == endings.end() ? "" : found->text;
}

std::string initialTextForOne(const MessageCase& which) {
  if (which.selfService) return texts::initialOneAppSelfService;
  return which.deferralLimit ? texts::initialOneAppWithLimit : texts::initialOneApp;
}

std::string paragraphsForSeveral(const MessageCase& which) {
  if (which.selfService) return texts::maySkip + endingFor(which.apps, texts::selfServiceListEndings);
  const std::string remaining = which.deferralLimit ? texts::deferralsRemaining : "";
  if (!which.withList) return std::string(texts::appNames) + texts::mayDefer + remaining;
  return texts::mayDefer + remaining + endingFor(which.apps, texts::initialListEndings);
}

std::string graceParagraphsForSeveral(const MessageCase& which) {
  if (!which.withList) return which.noDeferrals ? texts::graceNamesWithoutDeferrals : texts::graceNames;
  return (which.noDeferrals ? texts::graceListWithoutDeferrals : texts::graceList) +
         endingFor(which.apps, texts::graceListEndings);
}

std::vector<PromptWord> customWords(const MessageWords& words) {
  std::vector<PromptWord> custom = {{"updateButton", words.updateButton},
                                    {"logOutButton", words.updateButton},
                                    {"deferButton", words.deferButton},
                                    {"deferCount", std::to_string(words.deferCount)},
                                    {"updateCount", std::to_string(words.appNames.size())},
                                    {"appList", fmt::format("{}", fmt::join(words.appNames, ", "))},
                                    {"gracePeriod", words.gracePeriod}};
  if (words.appNames.size() == 1) custom.push_back({"appName", words.appNames.front()});
  return custom;
}

std::vector<PromptWord> ownWords(const MessageWords& words) {
  return {{"{appName}", words.appNames.empty() ? "" : words.appNames.front()},
          {"{apps}", fmt::format("{}", fmt::join(words.appNames, ", "))},
          {"{count}", std::to_string(words.appNames.size())},
          {"{updateButton}", words.updateButton},
          {"{deferCount}", std::to_string(words.deferCount)},
          {"{grace}", words.gracePeriod},
          {"{manyAppsAdvice}", words.advice.manyApps},
          {"{oneAppAdvice}", words.advice.oneApp},
          {"{shortAdvice}", words.advice.brief}};
}

}  // namespace

std::string initialText(const MessageCase& which) {
  if (which.apps == 1) return initialTextForOne(which);
  return texts::severalAppsHead + paragraphsForSeveral(which);
}

std::string graceText(const MessageCase& which) {
  if (which.apps == 1) return which.noDeferrals ? texts::graceOneAppWithoutDeferrals : texts::graceOneApp;
  return texts::severalAppsHead + graceParagraphsForSeveral(which);
}

std::string promptMessage(const std::optional<std::string>& custom, const std::string& ownText,
                          const MessageWords& words) {
  if (custom && !custom->empty()) return withWordsReplaced(*custom, customWords(words));
  return withWordsReplaced(ownText, ownWords(words));
}

std::string countedDeferButton(const std::optional<std::string>& custom, std::int64_t deferCount) {
  const std::string count = std::to_string(deferCount);
  if (custom && !custom->empty()) return withWordsReplaced(*custom, {{"deferCount", count}});
  return withWordsReplaced(texts::deferWithCount, {{"{deferCount}", count}});
}

std::string textOr(const std::optional<std::string>& custom, const std::string& otherwise) {
  return custom && !custom->empty() ? *custom : otherwise;
}

}  // namespace vorlu
