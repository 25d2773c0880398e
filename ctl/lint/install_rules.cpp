#include <fmt/format.h>

#include <algorithm>

#include "ctl/lint/entry_rules.h"
#include "vorlu/detection/version.h"
#include "vorlu/install/archive.h"
#include "vorlu/install/download_type.h"
#include "vorlu/install/placement.h"
#include "vorlu/install/source_marker.h"
#include "vorlu/platform/regular_expression.h"
#include "vorlu/state/property_list.h"

namespace vorlu::ctl {
namespace {

using Items = std::optional<std::vector<std::string>>;

bool isEmpty(const Items& items) {
  return !items || items->empty();
}

/// The names of things in an opened image or archive.
void checkItems(EntryLint& entry, const char* key, const Items& items) {
  for (std::size_t index = 0; items && index < items->size(); ++index) {
    const std::string& item = items->at(index);
    const std::string place = elementPath(key, index);
    if (item.empty()) {
      entry.lint.error(place, "is empty, so it is never found", "name the item, or remove it");
    } else if (hasMarker(item, regexMarker)) {
      const auto pattern = RegularExpression::compile(withoutMarker(item, regexMarker));
      if (!pattern)
        entry.lint.error(place, fmt::format("isn't a regular expression: {}", pattern.error()),
                         "mend the pattern; remember that a backslash is written twice in JSON");
    } else if (item.starts_with('/') || leavesFolder(withoutMarker(item, installerAppMarker))) {
      entry.lint.error(place, fmt::format("\"{}\" doesn't lie in the download, so it is never found", item),
                       "give the path from the top of the image or archive");
    }
  }
}

void checkUnused(EntryLint& entry, const char* key, bool given) {
  if (given)
    entry.lint.warning(key, fmt::format("isn't used for the downloadFileType \"{}\"", *entry.app.downloadFileType),
                       "remove it, or change the type");
}

void checkCopying(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  if (isEmpty(app.sourceItems))
    entry.lint.error("sourceItems",
                     fmt::format("is missing, so nothing of this \"{}\" can be installed", *app.downloadFileType),
                     "name the items to copy, such as \"Example.app\"");
  const std::string& destination = orEmpty(app.destinationPath);
  if (!destination.starts_with('/'))
    entry.lint.error("destinationPath",
                     destination.empty() ? "is missing, so the items have nowhere to go"
                                         : fmt::format("\"{}\" isn't an absolute path", destination),
                     "name the folder, such as \"/Applications\"");
  if (orEmpty(app.destinationName).find('/') != std::string::npos)
    entry.lint.error("destinationName", "has a slash", "give a plain name; destinationPath says where it goes");
  if (app.sourceItems && app.sourceItems->size() > 1 && !orEmpty(app.destinationName).empty())
    entry.lint.warning("destinationName", "isn't used, because several sourceItems keep their own names", "remove it");
  checkUnused(entry, "installerChoices", !orEmpty(app.installerChoices).empty());
}

void checkNested(EntryLint& entry, const char* key, const Items& items, const char* consequence) {
  if (isEmpty(items))
    entry.lint.error(key, fmt::format("is missing, so {}", consequence), "name what the download holds");
}

void checkByType(EntryLint& entry, const DownloadType& type) {
  const AppBlueprints& app = entry.app;
  const bool byProcessor = app.architectureNesting.value_or(false);
  const bool holdsPackages = type.method == InstallMethod::installNestedPackages;
  if (type.method == InstallMethod::copySourceItems) {
    checkCopying(entry);
  } else {
    checkUnused(entry, "sourceItems", !isEmpty(app.sourceItems));
    checkUnused(entry, "destinationPath", !orEmpty(app.destinationPath).empty());
  }
  if (holdsPackages && byProcessor) {
    checkNested(entry, "nestedIntelDownloadFiles", app.nestedIntelDownloadFiles, "nothing is installed on Intel");
    checkNested(entry, "nestedSiliconDownloadFiles", app.nestedSiliconDownloadFiles,
                "nothing is installed on Apple Silicon");
  } else if (holdsPackages) {
    checkNested(entry, "nestedDownloadFiles", app.nestedDownloadFiles, "nothing is installed");
  } else if (type.inner != Container::none) {
    checkNested(entry, "nestedDownloadFiles", app.nestedDownloadFiles, "the download isn't opened to its end");
  } else {
    checkUnused(entry, "nestedDownloadFiles", !isEmpty(app.nestedDownloadFiles));
  }
  if (!holdsPackages) checkUnused(entry, "architectureNesting", byProcessor);
  if (!byProcessor && holdsPackages &&
      (!isEmpty(app.nestedIntelDownloadFiles) || !isEmpty(app.nestedSiliconDownloadFiles)))
    entry.lint.warning(
        isEmpty(app.nestedIntelDownloadFiles) ? "nestedSiliconDownloadFiles" : "nestedIntelDownloadFiles",
        "isn't used, because architectureNesting isn't true", "set it to true, or remove the list");
}

void checkPermissions(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  if (app.mode && *app.mode != 0 && !modeFromDigits(*app.mode))
    entry.lint.error("mode", fmt::format("{} isn't a mode: its decimal digits are read as octal ones", *app.mode),
                     "write 755 for rwxr-xr-x");
  if (app.setPermissions.value_or(true)) return;
  for (const auto& [key, given] :
       {std::pair{"owner", !orEmpty(app.owner).empty()}, std::pair{"group", !orEmpty(app.group).empty()},
        std::pair{"mode", app.mode.has_value()}}) {
    if (given) entry.lint.warning(key, "isn't used, because setPermissions is false", "remove it");
  }
}

void checkChoices(EntryLint& entry) {
  const std::string& choices = orEmpty(entry.app.installerChoices);
  if (choices.empty()) return;
  bool isArray = false;
  const Status read = readPropertyList(choices, [&](Node& root) { isArray = root.kind() == NodeKind::array; });
  if (!read || !isArray)
    entry.lint.error("installerChoices", "isn't the XML property list with an array that the installer takes",
                     "give what \"installer -showChoiceChangesXML -pkg FILE\" prints, with your changes");
}

void checkSize(EntryLint& entry, const char* key, const std::optional<std::int64_t>& size) {
  constexpr std::int64_t largest = 100'000'000;  // 100 GB, in kilobytes
  if (size.value_or(0) > largest)
    entry.lint.warning(key, fmt::format("means {} GB, since sizes are in kilobytes", *size / 1'000'000),
                       "divide the bytes by 1000");
}

void checkSystem(EntryLint& entry) {
  const std::string& lowest = orEmpty(entry.app.minimumOS);
  const std::string& highest = orEmpty(entry.app.maximumOS);
  const auto isVersion = [](const std::string& text) {
    return text.find_first_not_of("0123456789.") == std::string::npos && text.front() != '.' && text.back() != '.';
  };
  for (const auto& [key, version] : {std::pair{"minimumOS", &lowest}, std::pair{"maximumOS", &highest}}) {
    if (!version->empty() && !isVersion(*version))
      entry.lint.error(key, fmt::format("\"{}\" isn't a version of macOS", *version), "write it like \"13.0\"");
  }
  if (!lowest.empty() && !highest.empty() && compareVersions(lowest, highest) > 0)
    return entry.lint.error("minimumOS",
                            fmt::format("is above maximumOS (\"{}\"), so no Mac is ever suitable", highest),
                            "exchange the two, or remove one");
  if (!highest.empty() && isVersion(highest) && std::ranges::count(highest, '.') < 2)
    entry.lint.warning("maximumOS",
                       fmt::format("keeps macOS {}.0 out already, which orders above \"{}\"", highest, highest),
                       fmt::format("give three numbers, such as \"{}.99\"",
                                   std::ranges::count(highest, '.') == 0 ? highest + ".99" : highest));
}

}  // namespace

void checkInstall(EntryLint& entry) {
  const AppBlueprints& app = entry.app;
  checkItems(entry, "sourceItems", app.sourceItems);
  checkItems(entry, "nestedDownloadFiles", app.nestedDownloadFiles);
  checkItems(entry, "nestedIntelDownloadFiles", app.nestedIntelDownloadFiles);
  checkItems(entry, "nestedSiliconDownloadFiles", app.nestedSiliconDownloadFiles);
  if (orEmpty(app.downloadFileType).empty())
    entry.lint.error("downloadFileType", "is missing, so the download can't be opened",
                     "say what is downloaded, such as \"dmg\" or \"pkg\"");
  else if (const DownloadType* type = findDownloadType(*app.downloadFileType))
    checkByType(entry, *type);
  checkPermissions(entry);
  checkChoices(entry);
  checkSize(entry, "installerSize", app.installerSize);
  checkSize(entry, "installedSize", app.installedSize);
  checkSystem(entry);
}

void checkScripts(EntryLint& entry, const SyntaxCheck& syntax) {
  const AppBlueprints& app = entry.app;
  const auto check = [&](const char* key, const std::optional<std::string>& script, ScriptUse use) {
    if (orEmpty(script).empty()) return;
    for (ScriptFault& fault : scriptFaults(*script, use, syntax)) {
      if (fault.severity == Severity::error)
        entry.lint.error(key, std::move(fault.problem), std::move(fault.advice));
      else
        entry.lint.warning(key, std::move(fault.problem), std::move(fault.advice));
    }
  };
  check("latestVersionScript", app.latestVersionScript, ScriptUse::lookUp);
  check("universalDownloadURLCode", app.universalDownloadURLCode, ScriptUse::lookUp);
  check("intelDownloadURLCode", app.intelDownloadURLCode, ScriptUse::lookUp);
  check("siliconDownloadURLCode", app.siliconDownloadURLCode, ScriptUse::lookUp);
  check("preInstallScript", app.preInstallScript, ScriptUse::install);
  check("postInstallScript", app.postInstallScript, ScriptUse::install);
}

}  // namespace vorlu::ctl
