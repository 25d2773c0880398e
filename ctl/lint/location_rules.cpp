#include <fmt/format.h>

#include <array>

#include "ctl/lint/entry_rules.h"
#include "ctl/lint/spelling.h"

namespace vorlu::ctl {
namespace {

constexpr std::string_view versionWord = "latestVersion";
constexpr std::string_view userWord = "currentUser";

void checkAbsolute(EntryLint& entry, const std::string& key, const std::string& path) {
  if (!path.empty() && !path.starts_with('/'))
    entry.lint.error(key, fmt::format("\"{}\" isn't an absolute path, so nothing is ever found there", path),
                     "begin it with a slash");
}

void checkRunning(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  const bool isBundle = orEmpty(app.appType) == "appBundle";
  const bool looksLikeBundle = orEmpty(app.appPath).ends_with(".app");
  if (isBundle && !orEmpty(app.appPath).empty() && !looksLikeBundle)
    entry.lint.warning("appPath", "isn't an application bundle, though appType says \"appBundle\"",
                       "name the .app, or leave appType out");
  if (!isBundle && looksLikeBundle)
    entry.lint.warning("appType", "isn't \"appBundle\", so the application isn't noticed running, quit or opened again",
                       "say \"appBundle\" for an application");
  if (!app.blockingApps) return;
  for (std::size_t index = 0; index < app.blockingApps->size(); ++index) {
    const std::string& name = app.blockingApps->at(index);
    if (name.ends_with(".app") || name.find('/') != std::string::npos)
      entry.lint.error(elementPath("blockingApps", index),
                       fmt::format("\"{}\" is no name of a process, so it is never seen running", name),
                       "give the name of the program, as in Activity Monitor");
  }
}

/// The words between percent signs, such as "latestVersion".
std::vector<std::string_view> wordsOf(std::string_view text) {
  std::vector<std::string_view> words;
  for (std::size_t start = text.find('%'); start != std::string_view::npos; start = text.find('%', start + 1)) {
    const std::size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", start + 1);
    if (end != std::string_view::npos && text[end] == '%' && end > start + 1)
      words.push_back(text.substr(start + 1, end - start - 1));
  }
  return words;
}

/// Which placeholders a text is expanded with.
struct Expands {
  bool version = false;
  bool user = false;
};

void checkWords(EntryLint& entry, const std::string& key, std::string_view text, Expands expands) {
  for (const std::string_view word : wordsOf(text)) {
    const bool isVersion = word == versionWord;
    const bool isUser = word == userWord;
    if (!isVersion && !isUser) {
      if (const auto meant = nearestWord(word, {versionWord, userWord}))
        entry.lint.error(key, fmt::format("\"%{}%\" is no placeholder and stays as it is", word),
                         fmt::format("write %{}%", *meant));
    } else if ((isVersion && !expands.version) || (isUser && !expands.user)) {
      entry.lint.error(key, fmt::format("\"%{}%\" isn't replaced in this field and stays as it is", word),
                       "write out what it stands for, or move it to a field that is expanded");
    } else if (isVersion && orEmpty(entry.app.latestVersion).empty()) {
      entry.lint.error(key, "\"%latestVersion%\" becomes nothing here, because latestVersion is empty",
                       "give latestVersion beside the versions by processor");
    }
  }
}

}  // namespace

void checkLocation(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  const bool hasAlternates = app.alternatePaths && !app.alternatePaths->empty();
  if (orEmpty(app.appPath).empty() && !hasAlternates && orEmpty(app.appPrefixName).empty())
    entry.lint.error("appPath",
                     "is missing, as are alternatePaths and appPrefixName, so the application is never found",
                     "say where the application is installed");
  checkAbsolute(entry, "appPath", orEmpty(app.appPath));
  checkAbsolute(entry, "prefixSearchPath", orEmpty(app.prefixSearchPath));
  for (std::size_t index = 0; hasAlternates && index < app.alternatePaths->size(); ++index)
    checkAbsolute(entry, elementPath("alternatePaths", index), app.alternatePaths->at(index));
  if (!orEmpty(app.prefixSearchPath).empty() && orEmpty(app.appPrefixName).empty())
    entry.lint.warning("prefixSearchPath", "isn't searched, because appPrefixName is missing",
                       "give the part of the name that is looked for, or remove it");
  checkRunning(entry);
}

void checkPlaceholders(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  constexpr Expands version{.version = true};
  checkWords(entry, "infoPlistPath", orEmpty(app.infoPlistPath), version);
  checkWords(entry, "universalDownloadURLCode", orEmpty(app.universalDownloadURLCode), version);
  checkWords(entry, "intelDownloadURLCode", orEmpty(app.intelDownloadURLCode), version);
  checkWords(entry, "siliconDownloadURLCode", orEmpty(app.siliconDownloadURLCode), version);
  checkWords(entry, "appPath", orEmpty(app.appPath), {.version = true, .user = true});
  checkWords(entry, "universalDownloadURL", orEmpty(app.universalDownloadURL), {});
  checkWords(entry, "intelDownloadURL", orEmpty(app.intelDownloadURL), {});
  checkWords(entry, "appleSiliconDownloadURL", orEmpty(app.appleSiliconDownloadURL), {});
  checkWords(entry, "javascriptScrapeURL", orEmpty(app.javascriptScrapeURL), {});
  checkWords(entry, "prefixSearchPath", orEmpty(app.prefixSearchPath), {});
  checkWords(entry, "destinationPath", orEmpty(app.destinationPath), {});
  checkWords(entry, "destinationName", orEmpty(app.destinationName), {});
  if (!app.alternatePaths) return;
  for (std::size_t index = 0; index < app.alternatePaths->size(); ++index)
    checkWords(entry, elementPath("alternatePaths", index), app.alternatePaths->at(index), {.user = true});
}

}  // namespace vorlu::ctl
