#include <fmt/format.h>

#include <array>

#include "ctl/lint/entry_rules.h"
#include "ctl/lint/hash_text.h"
#include "ctl/lint/web_address.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/version.h"

namespace vorlu::ctl {
namespace {

bool isEmpty(const std::optional<std::string>& text) {
  return orEmpty(text).empty();
}

/// A version that is always or never above what is installed.
void checkOrder(EntryLint& entry, const char* key, const std::optional<std::string>& version) {
  if (isEmpty(version)) return;
  // Every installed version begins with a number, and none is as large as this one.
  constexpr std::string_view lowest = "0";
  constexpr std::string_view highest = "999999999999";
  if (compareVersions(*version, highest) > 0)
    return entry.lint.error(
        key, fmt::format("\"{}\" orders above every number, so an update would be due for ever", *version),
        "begin the version with its number, as the application itself shows it");
  if (compareVersions(*version, lowest) < 0)
    return entry.lint.error(key,
                            fmt::format("\"{}\" orders below every number, so no update would ever be due", *version),
                            "begin the version with its number, without a blank before it");
  if (trimmed(*version) != *version)
    entry.lint.error(
        key,
        fmt::format("\"{}\" has blanks at its end and orders above \"{}\": the update would be due for ever", *version,
                    trimmed(*version)),
        "remove the blanks");
}

void checkMethod(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  const std::string& method = orEmpty(app.latestVersionMethod);
  if (method.empty())
    return entry.lint.error("latestVersionMethod",
                            "is missing: no installed version would be read, and an update would be due for ever",
                            "say \"CFBundleShortVersionString\", or another of the methods");
  if (method == "shellCommand" && isEmpty(app.latestVersionScript))
    entry.lint.error("latestVersionScript", "is missing, and latestVersionMethod is \"shellCommand\"",
                     "give the script that prints the installed version");
  if (method != "shellCommand" && !isEmpty(app.latestVersionScript))
    entry.lint.warning("latestVersionScript",
                       fmt::format("is never run, because latestVersionMethod is \"{}\"", method),
                       "remove it, or say \"shellCommand\"");
  if (method == "pkgReceipt" && (!app.installReceipts || app.installReceipts->empty()))
    entry.lint.error("installReceipts", "is missing, and latestVersionMethod is \"pkgReceipt\"",
                     "name the package identifier whose receipt holds the version");
  if (app.installReceipts && app.installReceipts->size() > 1 && method == "pkgReceipt")
    entry.lint.warning("installReceipts[1]", "isn't looked at: only the first receipt is",
                       "keep the one whose version is the application's");
  if (!method.starts_with("CFBundle") && !isEmpty(app.infoPlistPath))
    entry.lint.warning("infoPlistPath", fmt::format("isn't read, because latestVersionMethod is \"{}\"", method),
                       "remove it, or read the version from a property list");
}

void checkIcon(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  checkHashText(entry.lint, "iconHash", orEmpty(app.iconHash));
  checkWebAddress(entry.lint, "cloudIcon", orEmpty(app.cloudIcon), BlanksInURL::allowed);
  if (orEmpty(app.localIcon).find('/') != std::string::npos)
    entry.lint.error("localIcon", "has a slash, and icons lie in one folder", "give a plain file name");
  if (isEmpty(app.localIcon) != isEmpty(app.cloudIcon))
    entry.lint.warning(isEmpty(app.localIcon) ? "localIcon" : "cloudIcon",
                       "is missing, and an icon needs both a file name and the URL that it comes from",
                       "give both, or neither");
}

}  // namespace

void checkIdentity(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  if (isEmpty(app.appName))
    entry.lint.error("appName", "is missing: logs, prompts and the installer look-up go by it",
                     "give the name that users know");
  if (isEmpty(app.appIdentifier))
    entry.lint.error("appIdentifier", "is missing, so the entry takes no part in update checks",
                     "give an identifier that no other entry has");
  checkIcon(entry);
}

void checkVersions(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  const bool hasPair = !isEmpty(app.latestIntelVersion) && !isEmpty(app.latestSiliconVersion);
  const bool hasHalf = isEmpty(app.latestIntelVersion) != isEmpty(app.latestSiliconVersion);
  if (isEmpty(app.latestVersion) && !hasPair)
    entry.lint.error("latestVersion", "is missing, so no update is ever found", "give the version that is current");
  if (hasHalf)
    entry.lint.warning(isEmpty(app.latestIntelVersion) ? "latestSiliconVersion" : "latestIntelVersion",
                       "isn't looked at, because the other processor's version is missing",
                       "give latestIntelVersion and latestSiliconVersion, or neither");
  checkOrder(entry, "latestVersion", app.latestVersion);
  checkOrder(entry, "latestIntelVersion", app.latestIntelVersion);
  checkOrder(entry, "latestSiliconVersion", app.latestSiliconVersion);
  checkMethod(entry);
}

}  // namespace vorlu::ctl
