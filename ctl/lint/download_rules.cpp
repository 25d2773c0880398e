#include <fmt/format.h>

#include <algorithm>

#include "ctl/lint/entry_builds.h"
#include "ctl/lint/entry_rules.h"
#include "ctl/lint/hash_text.h"
#include "ctl/lint/web_address.h"
#include "vorlu/platform/regular_expression.h"

namespace vorlu::ctl {
namespace {

void checkArchitecture(EntryLint& entry) {
  if (orEmpty(entry.app.architecture).empty())
    entry.lint.error("architecture", "is missing, so it isn't clear which download is meant",
                     "say \"universal\" for one download, or \"arch\" for one by processor");
}

void checkFixedURLs(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  const auto builds = wantedBuilds(app);
  const bool none = std::ranges::all_of(builds, [](const BuildFields& build) { return orEmpty(build.url).empty(); });
  for (const BuildFields& build : builds) {
    const bool declared = build.isDeclaredMissing() && !none;
    if (orEmpty(build.url).empty() && !declared)
      entry.lint.error(build.urlKey,
                       fmt::format("is missing, so there is nothing to download for this {} application",
                                   builds.size() == 1 ? "universal" : build.words),
                       builds.size() == 1 ? "give the URL of the installer"
                                          : "give the URL, or an empty text where there is no such build");
  }
  constexpr const char* unused = "isn't used, because specifyDownloadURL is true or missing";
  constexpr const char* advice = "remove it, or set specifyDownloadURL to false";
  if (!orEmpty(app.javascriptScrapeURL).empty()) entry.lint.warning("javascriptScrapeURL", unused, advice);
  for (const BuildFields& build : builds) {
    if (!build.script.empty()) entry.lint.warning(build.scriptKey, unused, advice);
    if (!build.regex.empty()) entry.lint.warning(build.regexKey, unused, advice);
  }
}

void checkSearchedPage(EntryLint& entry, const BuildFields& build) {
  if (build.regex.empty())
    entry.lint.error(build.regexKey, "is missing, and the download's URL is searched for in javascriptScrapeURL",
                     "give the pattern that matches the whole URL");
  if (!build.script.empty())
    entry.lint.warning(build.scriptKey, "is never run, because javascriptScrapeURL comes first",
                       "remove one of the two");
}

void checkLookedUpURLs(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  const bool byPage = !orEmpty(app.javascriptScrapeURL).empty();
  for (const BuildFields& build : wantedBuilds(app)) {
    if (!orEmpty(build.url).empty())
      entry.lint.warning(build.urlKey, "isn't used, because specifyDownloadURL is false",
                         "remove it, or set specifyDownloadURL to true");
    if (build.isDeclaredMissing()) continue;
    if (byPage) {
      checkSearchedPage(entry, build);
    } else if (build.script.empty()) {
      entry.lint.error(build.scriptKey,
                       "is missing, as is javascriptScrapeURL, so there is no way to find the download's URL",
                       "give the script that prints the URL, or the page that holds it");
    } else if (!build.regex.empty()) {
      entry.lint.warning(build.regexKey, "isn't used, because javascriptScrapeURL is missing",
                         "remove it, or name the page");
    }
  }
}

void checkRegex(EntryLint& entry, const BuildFields& build) {
  if (build.regex.empty()) return;
  const auto pattern = RegularExpression::compile(build.regex);
  if (!pattern)
    return entry.lint.error(build.regexKey, fmt::format("isn't a regular expression: {}", pattern.error()),
                            "mend the pattern; remember that a backslash is written twice in JSON");
  if (pattern->firstMatch(""))
    entry.lint.error(build.regexKey, "matches the empty text, so the URL that is found is empty",
                     "let the pattern match the whole URL");
}

void checkHeader(EntryLint& entry) {
  const std::string& key = orEmpty(entry.app.requestHeaderKey);
  const std::string& value = orEmpty(entry.app.requestHeaderValue);
  if (key.empty() != value.empty())
    entry.lint.warning(key.empty() ? "requestHeaderKey" : "requestHeaderValue", "is missing, so no header is sent",
                       "give name and value, or neither");
  if (key.find_first_of(" :\t\r\n") != std::string::npos)
    entry.lint.error("requestHeaderKey", fmt::format("\"{}\" can't be the name of a header", key),
                     "give the name alone, without colon or blanks");
  if (value.find_first_of("\r\n") != std::string::npos)
    entry.lint.error("requestHeaderValue", "has a line break, which no header can have", "write it on one line");
}

}  // namespace

void checkDownload(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  checkArchitecture(entry);
  checkWebAddress(entry.lint, "javascriptScrapeURL", orEmpty(app.javascriptScrapeURL), BlanksInURL::broken);
  for (const BuildFields& build : {universalFields(app), intelFields(app), siliconFields(app)}) {
    checkWebAddress(entry.lint, build.urlKey, orEmpty(build.url), BlanksInURL::allowed);
    checkRegex(entry, build);
  }
  for (const BuildFields& build : unusedBuilds(app)) {
    if (!orEmpty(build.url).empty())
      entry.lint.warning(build.urlKey,
                         fmt::format("isn't used, because architecture is \"{}\"", orEmpty(app.architecture)),
                         "remove it, or change the architecture");
  }
  app.specifyDownloadURL.value_or(true) ? checkFixedURLs(entry) : checkLookedUpURLs(entry);
  checkHeader(entry);
}

void checkVerification(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  const bool bySignature = app.verifySignature.value_or(true);
  const bool hasSignature = !orEmpty(app.expectedCodeSignature).empty();
  if (bySignature && !hasSignature)
    entry.lint.error("expectedCodeSignature", "is missing, so every download is refused",
                     "give the developer as codesign tells it, such as \"Example Inc (ABCDE12345)\", or set "
                     "verifySignature to false and give a hash");
  if (!bySignature && hasSignature)
    entry.lint.warning("expectedCodeSignature", "isn't looked at, because verifySignature is false",
                       "remove it, or set verifySignature to true");
  if (hasSignature && orEmpty(app.expectedCodeSignature).find(": ") != std::string::npos)
    entry.lint.error("expectedCodeSignature",
                     "holds the kind of certificate, which isn't compared, so it never matches",
                     "give what stands behind \"Developer ID Application: \"");
  for (const BuildFields& build : {universalFields(app), intelFields(app), siliconFields(app)})
    checkHashText(entry.lint, build.hashKey, build.hash);
  for (const BuildFields& build : wantedBuilds(app)) {
    if (!bySignature && build.hash.empty() && !build.isDeclaredMissing())
      entry.lint.error(build.hashKey, "is missing and verifySignature is false, so every download is refused",
                       "give the installer's SHA-256, or verify its signature");
  }
}

}  // namespace vorlu::ctl
