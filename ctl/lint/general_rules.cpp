#include <fmt/format.h>

#include <algorithm>

#include "ctl/lint/preference_rules.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/platform/linux/linux_security.h"
#include "vorlu/state/encoding.h"

namespace vorlu::ctl {
namespace {

using List = std::optional<TextList>;

bool holds(const TextList& list, const std::string& text) {
  return std::ranges::find(list, text) != list.end();
}

/// Empty and repeated items of a list.
void checkItems(RecordLint& lint, const std::string& key, const List& list) {
  if (!list) return;
  for (std::size_t index = 0; index < list->size(); ++index) {
    const std::string& item = list->at(index);
    const std::string place = elementPath(key, index);
    if (trimmed(item).empty())
      lint.error(place, "is empty, so it means nothing", "remove it");
    else if (trimmed(item) != item)
      lint.error(place, fmt::format("\"{}\" has blanks around it, so it means nothing", item), "remove the blanks");
    else if (std::find(list->begin(), list->begin() + static_cast<std::ptrdiff_t>(index), item) !=
             list->begin() + static_cast<std::ptrdiff_t>(index))
      lint.warning(place, fmt::format("\"{}\" stands in this list twice", item), "remove one of them");
  }
}

/// What one list gives and the other takes away.
void checkPair(RecordLint& lint, const std::string& allowedKey, const List& allowed, const std::string& excludedKey,
               const List& excluded, const char* what) {
  checkItems(lint, allowedKey, allowed);
  checkItems(lint, excludedKey, excluded);
  if (allowed && allowed->empty())
    lint.warning(allowedKey, fmt::format("is empty, so all apps of the catalog are {}", what),
                 "remove it, or name the apps that are allowed");
  if (!allowed || allowed->empty() || !excluded) return;
  const auto isTaken = [&](const std::string& app) { return holds(*excluded, app); };
  if (std::ranges::all_of(*allowed, isTaken))
    return lint.error(allowedKey, fmt::format("names only apps that are excluded as well, so nothing is ever {}", what),
                      fmt::format("remove them from {}", excludedKey));
  for (std::size_t index = 0; index < allowed->size(); ++index) {
    if (isTaken(allowed->at(index)))
      lint.warning(elementPath(allowedKey, index),
                   fmt::format("\"{}\" is excluded as well, and exclusion wins", allowed->at(index)),
                   "remove it from one of the two lists");
  }
}

void checkReportKey(RecordLint& lint, const std::optional<std::string>& text) {
  if (!text) return;
  const std::string advice =
      "give what \"openssl pkey -pubin -in KEY.pem -outform der | openssl base64 -A\" prints for an RSA key";
  const char* const key = "GeneralOptions.publicKey";
  if (text->empty()) return lint.warning(key, "is empty, so no report is sent", "give the key, or remove it");
  const auto der = base64Decode(*text);
  if (!der) return lint.error(key, "isn't Base64, so no report can be enciphered", advice);
  if (const Status usable = LinuxSecurity().checkPublicKey(*der); !usable)
    lint.error(key, fmt::format("can't be used to encipher reports: {}", usable.error()), advice);
}

}  // namespace

void checkGeneral(SettingsLint& settings) {
  const GeneralOptionPrefs& general = settings.prefs.GeneralOptions;
  RecordLint& lint = settings.lint;
  checkPair(lint, "GeneralOptions.allowedAppInstalls", general.allowedAppInstalls, "GeneralOptions.excludedAppInstalls",
            general.excludedAppInstalls, "installed");
  checkPair(lint, "GeneralOptions.allowedAppUpdates", general.allowedAppUpdates, "GeneralOptions.excludedAppUpdates",
            general.excludedAppUpdates, "updated");
  if (!general.hourlyCheck && !general.updatePrompts)
    lint.warning("GeneralOptions.updatePrompts",
                 "is false, as is hourlyCheck, so the recurring run neither looks for updates nor asks for them",
                 "leave one of the two on, unless only forced updates are wanted");
  checkReportKey(lint, general.publicKey);
}

}  // namespace vorlu::ctl
