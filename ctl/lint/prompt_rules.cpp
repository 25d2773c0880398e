#include <fmt/format.h>

#include <algorithm>

#include "ctl/lint/preference_rules.h"
#include "ctl/lint/spelling.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/letter_case.h"
#include "vorlu/policy/deferrals.h"
#include "vorlu/prompts/prompt_size.h"

namespace vorlu::ctl {
namespace {

using Text = std::optional<std::string>;
using Words = std::vector<std::string_view>;

/// What stands for something in a text, and is replaced as a bare word.
const Words messageWords = {"updateButton", "logOutButton", "deferButton", "deferCount",
                            "updateCount",  "appList",      "gracePeriod", "appName"};

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAnyCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(
      a, b, [](char x, char y) { return isLetter(x) && isLetter(y) ? (x | 0x20) == (y | 0x20) : x == y; });
}

/// Words of nothing but letters, with what stands beside them.
struct FoundWord {
  std::string_view word;
  char before = ' ';
  char after = ' ';
};

std::vector<FoundWord> wordsOf(std::string_view text) {
  std::vector<FoundWord> words;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    while (at < text.size() && isLetter(text[at])) ++at;
    if (at > start)
      words.push_back(
          {text.substr(start, at - start), start == 0 ? ' ' : text[start - 1], at == text.size() ? ' ' : text[at]});
    else
      ++at;
  }
  return words;
}

class PromptReview {
 public:
  PromptReview(RecordLint& lint, std::string section) : lint_(lint), section_(std::move(section)) {}

  /// `replaced` are the words that stand for something in this text.
  void text(const char* name, const Text& text, const Words& replaced) {
    const std::string key = keyOf(name);
    if (!text || !lint_.has(key)) return;
    if (trimmed(*text).empty())
      return lint_.warning(key,
                           text->empty() ? "is empty, so the agent's own text is shown" : "shows nothing but blanks",
                           "write a text, or remove the key");
    for (const FoundWord& found : wordsOf(*text)) word(key, found, replaced);
  }

  void title(const char* name, const Text& title, const Words& replaced) {
    const std::string key = keyOf(name);
    if (lint_.has(key) && trimmed(title.value_or("")).empty())
      return lint_.warning(key, "is empty, so the prompt has no title", "write a title, or remove the key");
    text(name, title, replaced);
  }

  void icon(const char* name, const Text& icon, bool selfServiceAllowed) {
    const std::string key = keyOf(name);
    if (!icon || icon->empty() || icon->starts_with('/')) return;
    if (selfServiceAllowed && isInAnyCase(*icon, "selfservice")) return;
    lint_.error(key, fmt::format("\"{}\" isn't the path of a file, so it isn't shown", *icon),
                selfServiceAllowed ? "give an absolute path, or \"selfservice\"" : "give an absolute path");
  }

  void size(const char* name, const std::optional<PromptSizePrefs>& size) {
    const std::string key = keyOf(name);
    const std::string height = key + ".promptHeight";
    const std::string width = key + ".promptWidth";
    if (!size || lint_.isSettled(height) || lint_.isSettled(width)) return;
    const char* const missing = size->promptHeight && size->promptWidth ? nullptr : "is missing";
    if (missing != nullptr)
      return lint_.error(size->promptHeight ? width : height, "is missing, so the other number isn't used either",
                         "give height and width");
    const PromptSize wanted{*size->promptHeight, *size->promptWidth};
    if (promptSize(forcedSizes, PromptSizeClass::small, false, size) != wanted)
      lint_.error(
          key,
          fmt::format("of {} by {} points isn't used, because no display has room for it", wanted.height, wanted.width),
          "give the size in points, such as 340 by 690");
  }

  void acceptable(const char* name, const std::optional<std::vector<std::string>>& items, bool identifiers) {
    for (std::size_t index = 0; items && index < items->size(); ++index) {
      const std::string& item = items->at(index);
      const std::string place = elementPath(keyOf(name), index);
      const bool isName = item.ends_with(".app") || item.find('/') != std::string::npos;
      if (trimmed(item).empty())
        lint_.error(place, "is empty, so it never postpones a prompt", "remove it");
      else if (isName || (identifiers && item.find('.') == std::string::npos))
        lint_.error(place,
                    fmt::format("\"{}\" isn't {}, so it never postpones a prompt", item,
                                identifiers ? "a bundle identifier" : "the name of a process"),
                    identifiers ? "give the identifier, such as \"com.example.slides\""
                                : "give the name of the program, as in Activity Monitor");
    }
  }

 private:
  std::string keyOf(const char* name) const { return fmt::format("{}.{}", section_, name); }

  void word(const std::string& key, const FoundWord& found, const Words& replaced) {
    const auto meant = std::ranges::find_if(messageWords, [&](auto known) { return isAnyCase(known, found.word); });
    if (meant == messageWords.end()) return misspelt(key, found);
    if (*meant != found.word)
      return lint_.warning(key, fmt::format("\"{}\" stays as it is, because the letter case counts", found.word),
                           fmt::format("write {}", *meant));
    if (std::ranges::find(replaced, found.word) == replaced.end())
      return lint_.warning(key, fmt::format("\"{}\" isn't replaced in this text and is shown as it is", found.word),
                           "write it out, or leave it away");
    if ((found.before == '{' && found.after == '}') || (found.before == '%' && found.after == '%'))
      lint_.warning(key,
                    fmt::format("the signs around \"{}\" are shown, because the bare word is replaced", found.word),
                    fmt::format("write {} alone", found.word));
  }

  /// A word with a capital inside is no ordinary one.
  void misspelt(const std::string& key, const FoundWord& found) {
    const bool isCamel = found.word.size() > 3 &&
                         std::ranges::any_of(found.word.substr(1), [](char c) { return c <= 'Z'; }) &&
                         found.word.front() >= 'a';
    if (!isCamel) return;
    if (const auto meant = nearestWord(found.word, messageWords))
      lint_.warning(key, fmt::format("\"{}\" is no word that is replaced", found.word),
                    fmt::format("write {}", *meant));
  }

  RecordLint& lint_;
  std::string section_;
};

/// Words of a message of several apps, or of one.
Words wordsFor(bool oneApp) {
  Words words = messageWords;
  if (!oneApp) std::erase(words, "appName");
  return words;
}

void checkShared(PromptReview& review, const auto& section) {
  review.icon("customIcon", section.customIcon, false);
  review.icon("initialPromptOverlayIcon", section.initialPromptOverlayIcon, true);
  review.icon("updateProgressOverlayIcon", section.updateProgressOverlayIcon, true);
  review.size("customInitialPromptSize", section.customInitialPromptSize);
  review.size("customGracePromptSize", section.customGracePromptSize);
  review.text("customUpdateButton", section.customUpdateButton, {});
  review.acceptable("acceptableAppBundleIDs", section.acceptableAppBundleIDs, true);
  review.acceptable("acceptableAppAssertions", section.acceptableAppAssertions, false);
}

void checkScheduled(RecordLint& lint, const ScheduledUpdatesPrefs& prefs) {
  PromptReview review(lint, "ScheduledUpdates");
  checkShared(review, prefs);
  review.size("customSelfServicePromptSize", prefs.customSelfServicePromptSize);
  review.title("singleAppTitle", prefs.singleAppTitle, {"appName"});
  review.title("multipleAppsTitle", prefs.multipleAppsTitle, {});
  const DeferralMode mode = deferralModeOf(prefs.deferralConfiguration.deferralOption);
  review.text("customDeferButton", prefs.customDeferButton,
              mode == DeferralMode::limited ? Words{"deferCount"} : Words{});
  review.text("customSkipButton", prefs.customSkipButton, {});
  review.text("singleInitialQuitPromptMessage", prefs.singleInitialQuitPromptMessage, wordsFor(true));
  review.text("multipleInitialQuitPromptMessage", prefs.multipleInitialQuitPromptMessage, wordsFor(false));
  review.text("singleSelfServiceQuitMessage", prefs.singleSelfServiceQuitMessage, wordsFor(true));
  review.text("multipleSelfServiceQuitMessage", prefs.multipleSelfServiceQuitMessage, wordsFor(false));
  review.text("singleAppGracePeriodQuitMessage", prefs.singleAppGracePeriodQuitMessage, wordsFor(true));
  review.text("multipleAppGracePeriodQuitMessage", prefs.multipleAppGracePeriodQuitMessage, wordsFor(false));
  if (mode != DeferralMode::disabled) return;
  for (const char* const key :
       {"singleInitialQuitPromptMessage", "multipleInitialQuitPromptMessage", "customDeferButton"}) {
    const std::string path = memberPath("ScheduledUpdates", key);
    if (lint.has(path))
      lint.warning(path, "is never shown, because deferralOption is \"disableDeferrals\"",
                   "remove it, or allow deferrals");
  }
}

void checkForced(RecordLint& lint, const ForcedUpdatesPrefs& prefs) {
  PromptReview review(lint, "ForcedUpdates");
  checkShared(review, prefs);
  review.text("customTitle", prefs.customTitle, {"appName"});
  review.text("customDeferButton", prefs.customDeferButton, {"deferCount"});
  review.text("initialQuitPromptMessage", prefs.initialQuitPromptMessage, wordsFor(true));
  review.text("gracePeriodQuitPromptMessage", prefs.gracePeriodQuitPromptMessage, wordsFor(true));
}

}  // namespace

void checkPrompts(SettingsLint& settings) {
  checkScheduled(settings.lint, settings.prefs.ScheduledUpdates);
  checkForced(settings.lint, settings.prefs.ForcedUpdates);
}

}  // namespace vorlu::ctl
