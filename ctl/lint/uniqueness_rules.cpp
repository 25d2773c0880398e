#include <fmt/format.h>

#include <unordered_map>

#include "ctl/lint/entry_rules.h"
#include "vorlu/detection/download_cache.h"

namespace vorlu::ctl {
namespace {

/// By which key which entry was seen first.
struct Seen {
  std::size_t entry;
  const char* key;
};

/// A text by which an entry can be selected; of two entries with the same one the last is taken.
class LookUpTexts {
 public:
  void add(EntryLint& entry, std::size_t index, const char* key, const std::optional<std::string>& text) {
    if (orEmpty(text).empty()) return;
    const auto [seen, isNew] = seen_.try_emplace(*text, Seen{index, key});
    if (isNew || seen->second.entry == index) return;
    entry.lint.error(key,
                     fmt::format("\"{}\" is the {} of [{}], too, and whoever asks for it gets this entry", *text,
                                 seen->second.key, seen->second.entry),
                     "give each entry names of its own");
    entry.lint.settle(key);
  }

 private:
  std::unordered_map<std::string, Seen> seen_;
};

/// Cached installers of an app are told by its name without blanks, wherever that stands in a file's name.
void checkCacheNames(std::vector<EntryLint>& entries) {
  std::unordered_map<std::string, std::size_t> stems;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    const std::string& name = orEmpty(entries[index].app.appName);
    if (name.empty()) continue;
    const auto [seen, isNew] = stems.try_emplace(cacheFileStem(name, ""), index);
    if (!isNew)
      entries[index].lint.error(
          "appName",
          fmt::format("\"{}\" and the appName of [{}] share their cached installers, whose names have "
                      "no blanks",
                      name, seen->second),
          "choose another name");
  }
  for (EntryLint& entry : entries) {
    const std::string& name = orEmpty(entry.app.appName);
    if (name.empty()) continue;
    const std::string stem = cacheFileStem(name, "");
    for (std::size_t start = 1; start + 3 < stem.size(); ++start) {
      const auto shorter = stems.find(stem.substr(start));
      if (shorter == stems.end()) continue;
      entry.lint.warning(
          "appName",
          fmt::format("\"{}\" ends with the appName of [{}]: each time that one is up to date, the cached "
                      "installer of this one is deleted with its own",
                      name, shorter->second),
          "choose a name that doesn't end so, if that can be");
    }
  }
}

}  // namespace

void checkUniqueness(std::vector<EntryLint>& entries) {
  LookUpTexts texts;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    EntryLint& entry = entries[index];
    texts.add(entry, index, "appName", entry.app.appName);
    texts.add(entry, index, "appIdentifier", entry.app.appIdentifier);
    texts.add(entry, index, "serverName", entry.app.serverName);
    texts.add(entry, index, "legacyServerName", entry.app.legacyServerName);
  }
  checkCacheNames(entries);
}

}  // namespace vorlu::ctl
