#include "ctl/app_look.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/detection/download_cache.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/detection/inspect_app.h"
#include "vorlu/detection/location.h"
#include "vorlu/detection/placeholders.h"
#include "vorlu/install/download_type.h"
#include "vorlu/install/preflight.h"
#include "vorlu/install/running_apps.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu::ctl {
namespace {

/// One look under way.
struct Looking {
  Vorlu& vorlu;
  const AppBlueprints& entry;
  CatalogWalk walk;
  AppLook look = {};

  /// Notes a step; one that stops settles the fate, unless an earlier one has.
  void note(ExplainedStep step, Fate ifStopped) {
    if (step.verdict == stops && !look.hindrance) look.hindrance = ifStopped;
    look.steps.push_back(std::move(step));
  }
  void tell(std::string topic, std::string decidedBy, std::string detail) {
    look.steps.push_back({std::move(topic), tells, std::move(decidedBy), std::move(detail)});
  }
  const std::string& latest() const { return effectiveLatestVersion(entry, walk.processor); }
};

/// The text of a list that names the entry; empty without one.
std::string namedIn(const std::optional<TextList>& list, const AppBlueprints& entry) {
  if (!list) return {};
  const auto found = std::ranges::find_if(*list, [&](const std::string& text) { return isNamedBy(entry, text); });
  return found == list->end() ? std::string() : *found;
}

void lookAtLists(Looking& at) {
  const GeneralOptionPrefs& prefs = at.vorlu.preferences.general();
  at.look.isListed = at.entry.appIdentifier && at.walk.allowedIdentifiers.contains(*at.entry.appIdentifier);
  const std::string allowed = namedIn(prefs.allowedAppUpdates, at.entry);
  const std::string excluded = namedIn(prefs.excludedAppUpdates, at.entry);
  const bool hasAllowed = prefs.allowedAppUpdates && !prefs.allowedAppUpdates->empty();
  const bool byExclusion = !at.look.isListed && !excluded.empty();
  std::string detail;
  if (byExclusion)
    detail = fmt::format("the list excludes it as \"{}\"", excluded);
  else if (hasAllowed)
    detail = allowed.empty() ? "the list of allowed apps doesn't name it"
                             : fmt::format("the list of allowed apps names it as \"{}\"", allowed);
  else
    detail = at.look.isListed ? "no list excludes it" : "the catalog gives it no identifier";
  at.look.steps.push_back(decision(
      listsTopic, at.look.isListed,
      fmt::format("GeneralOptions.{}", hasAllowed && !byExclusion ? "allowedAppUpdates" : "excludedAppUpdates"),
      detail));
}

/// Which of the catalog's paths led to the app.
const char* keyOfLocation(Looking& at, const std::string& path) {
  if (path == expandAppPath(at.vorlu, at.entry)) return "appPath";
  for (const std::string& alternate : at.entry.alternatePaths.value_or(TextList{}))
    if (path == expandAlternatePath(at.vorlu, alternate)) return "alternatePaths";
  return "appPrefixName";
}

bool lookForApp(Looking& at) {
  const std::string path = locateApp(at.vorlu, at.entry, at.walk.listings);
  if (path.empty()) {
    at.note(decision("location", false, "appPath", "it isn't installed"), Fate::notInstalled);
    return false;
  }
  at.note(decision("location", true, keyOfLocation(at, path), path), Fate::notInstalled);
  return true;
}

void lookAtVersion(Looking& at, bool runScripts) {
  const std::string method = orEmpty(at.entry.latestVersionMethod);
  const std::string decidedBy = fmt::format("latestVersionMethod: {}", method);
  if (method == "shellCommand" && !runScripts) {
    at.note(decision("version", false, "latestVersionScript",
                     "its version is told by a script of the catalog, which isn't run without --run-scripts"),
            Fate::unknown);
    return;
  }
  at.look.found = lookAtApp(at.vorlu, at.entry, at.latest(), at.walk);
  if (!at.look.found) return;
  const ApplicationInventory& app = *at.look.found;
  if (declaresSkip(app.installedVersion)) {
    at.note(decision("version", false, decidedBy, "its version method takes it out of the updates (\"skip\")"),
            Fate::notManaged);
  } else {
    at.note(decision("version", app.updateRequired, decidedBy,
                     fmt::format("{} is installed, {} is the latest{}", app.installedVersion, app.latestVersion,
                                 at.entry.dateReleased ? " of " + *at.entry.dateReleased : "")),
            Fate::upToDate);
  }
}

const char* sentence(InstallFailure failure) {
  switch (failure) {
    case InstallFailure::noSiliconURL:
      return "the catalog has no installer for Apple Silicon";
    case InstallFailure::noIntelURL:
      return "the catalog has no installer for Intel";
    default:
      return "the catalog has no installer";
  }
}

/// What the pipeline asks of the Mac before it fetches anything.
void lookAtConditions(Looking& at) {
  Vorlu& vorlu = at.vorlu;
  const CurrentApp& app = vorlu.currentApp;
  const InstallRequest request = updateRequest(*at.look.found);
  InstallJob job(vorlu, request);
  job.processor = at.walk.processor;
  job.os = vorlu.platform.device.osVersion();
  if (const auto failure = checkArchitecture(job))
    at.note(decision("installer", false, "architecture", sentence(*failure)), Fate::blocked);
  const bool fits = !checkDiskSpace(job);
  if (!fits)
    at.note(
        decision("disk space", false, "installerSize, installedSize",
                 fmt::format("{} KB are needed, {} KB are free", job.space.required, job.space.available.value_or(0))),
        Fate::blocked);
  if (const auto failure = checkSystemVersion(job)) {
    const bool below = *failure == InstallFailure::minimumOS;
    at.note(decision("macOS", false, below ? "minimumOS" : "maximumOS",
                     fmt::format("this Mac has {}, {} is the {}", job.os, below ? app.minimumOS : app.maximumOS,
                                 below ? "lowest" : "highest")),
            Fate::blocked);
  }
}

void lookAtInstaller(Looking& at) {
  const CurrentApp& app = at.vorlu.currentApp;
  at.look.hasUnknownType = findDownloadType(app.downloadFileType) == nullptr;
  const std::string name =
      fmt::format("{}.{}", cacheFileStem(app.appName, at.latest()), cacheExtension(app.downloadFileType));
  const bool cached = at.vorlu.platform.files.exists(fmt::format("{}/{}", paths::downloads, name));
  at.tell("cache", paths::downloads,
          cached ? fmt::format("{} is there", name) : fmt::format("{} has to be fetched first", name));
  if (at.look.hasUnknownType)
    at.look.steps.push_back(decision("installer", false, "downloadFileType",
                                     fmt::format("\"{}\" is nothing that can be installed", app.downloadFileType)));
}

void lookAtUse(Looking& at) {
  const CurrentApp& app = at.vorlu.currentApp;
  const bool runs = isSelectedAppRunning(at.vorlu, at.look.found->installedPath, app.appName);
  at.look.inUse = runs && !app.updateWhileRunning;
  const char* decidedBy = app.updateWhileRunning     ? "updateWhileRunning"
                          : app.blockingApps.empty() ? app.installedBundleIdentifier.c_str()
                                                     : "blockingApps";
  at.tell("running", decidedBy,
          !runs            ? "it doesn't run"
          : !at.look.inUse ? "it runs and may be updated all the same"
                           : "it runs, and has to quit for its update");
}

}  // namespace

AppLook lookAt(Vorlu& vorlu, const AppBlueprints& entry, bool runScripts) {
  Looking at{vorlu, entry, CatalogWalk(vorlu)};
  if (at.latest().empty())
    at.note(decision("latest version", false, "latestVersion", "the catalog gives none"), Fate::notManaged);
  if (!entry.updatesAllowed.value_or(true))
    at.note(decision("catalog", false, "updatesAllowed", "the catalog offers no updates of it"), Fate::notManaged);
  lookAtLists(at);
  if (lacksBuild(entry, at.walk.processor))
    at.note(decision("processor", false, "architecture", "there is no build for this Mac's processor"),
            Fate::notManaged);
  if (!lookForApp(at)) return std::move(at.look);
  lookAtVersion(at, runScripts);
  if (!at.look.found || !at.look.found->updateRequired || at.look.hindrance) return std::move(at.look);
  if (!findApp(vorlu, orEmpty(entry.appName))) return std::move(at.look);
  lookAtConditions(at);
  lookAtInstaller(at);
  lookAtUse(at);
  return std::move(at.look);
}

}  // namespace vorlu::ctl
