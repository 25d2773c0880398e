#include "vorlu/install/running_apps.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <sstream>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/installed_version.h"
#include "vorlu/detection/placeholders.h"
#include "vorlu/platform/passing_fault.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/state/shell_line.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// The macOS release on which the list of running applications can't be relied on.
constexpr std::string_view releaseWithoutApplicationList = "13.0.0";

bool isAppBundle(const Vorlu& vorlu) {
  return vorlu.currentApp.appType == "appBundle";
}

ProcessResult search(Vorlu& vorlu, const std::string& name) {
  Command command;
  command.program = "/usr/bin/pgrep";
  command.arguments = {"-x", name};
  command.mergeStandardError = false;  // a complaint about the name is no process
  return runTool(vorlu.platform.processes, vorlu.log, command);
}

/// What can't be searched for counts as running: nobody's app may be replaced under his hands.
bool mayRun(Vorlu& vorlu, const std::string& name) {
  const ProcessResult result = search(vorlu, name);
  return !result.started || result.signal != 0 || !trimmed(result.output).empty();
}

bool isBundleRunning(Vorlu& vorlu, const std::string& path, const std::string& appName) {
  std::string identifier = readBundleIdentifier(vorlu, path);
  if (identifier == "Unknown") {
    const auto plist = vorlu.platform.files.read(path + "/Contents/Info.plist");
    if (!plist && isPassingFault(plist.failure())) return true;
    identifier = readBundleIdentifier(vorlu, path);  // the fault has passed, or there is none
  }
  return isAppRunning(vorlu, identifier, appName);
}

/// The first of `names` that runs.
std::optional<std::string> firstRunning(Vorlu& vorlu, const std::vector<std::string>& names) {
  const auto found =
      std::find_if(names.begin(), names.end(), [&](const std::string& name) { return mayRun(vorlu, name); });
  return found == names.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

void listAppBinaries(Vorlu& vorlu, const std::string& appPath) {
  std::vector<std::string>& binaries = vorlu.progress.appBinaries;
  const std::vector<std::string>& blocking = vorlu.currentApp.blockingApps;
  binaries.insert(binaries.end(), blocking.begin(), blocking.end());
  if (!blocking.empty() || !isAppBundle(vorlu)) return;

  const std::string folder = appPath + "/Contents/MacOS";
  if (!vorlu.platform.files.exists(folder)) {
    vorlu.log(fmt::format(
        "Error: The App binary path was not found at path {}/Contents/MacOS when attempting to list binaries",
        appPath));
    return;
  }
  const auto entries = vorlu.platform.files.list(folder);
  if (!entries) {
    vorlu.log(fmt::format("Error listing App Bundle binary folder: {}", entries.error()));
    return;
  }
  for (const std::string& entry : *entries) {
    const bool library = entry.find(".dylib") != std::string::npos && entry.find(".app") != std::string::npos;
    if (!library) binaries.push_back(entry);
  }
}

std::string findProcess(Vorlu& vorlu, const std::string& name) {
  return search(vorlu, name).output;
}

std::vector<std::string> processIds(Vorlu& vorlu, const std::string& name) {
  std::istringstream output(findProcess(vorlu, name));
  return {std::istream_iterator<std::string>(output), {}};
}

bool isAppRunning(Vorlu& vorlu, const std::string& bundleIdentifier, const std::string& appName) {
  InstallProgress& progress = vorlu.progress;
  progress.foundProcess.clear();
  if (vorlu.platform.device.osVersion() == releaseWithoutApplicationList) {
    const auto& names = progress.processWatchList.empty() ? progress.appBinaries : progress.processWatchList;
    if (names.empty())
      vorlu.log(fmt::format("Error: The App binary array was empty when attempting to force quit {}", appName));
    return firstRunning(vorlu, names).has_value();
  }
  if (progress.processWatchList.empty()) return vorlu.platform.applications.isRunning(bundleIdentifier);
  const auto found = firstRunning(vorlu, progress.processWatchList);
  progress.foundProcess = found.value_or("");
  return found.has_value();
}

bool isSelectedAppRunning(Vorlu& vorlu, const std::string& installedPath, const std::string& appName) {
  InstallProgress& progress = vorlu.progress;
  progress.appBinaries.clear();
  progress.processWatchList.clear();
  listAppBinaries(vorlu, installedPath);
  if (isAppBundle(vorlu)) return isBundleRunning(vorlu, installedPath, appName);

  if (vorlu.currentApp.blockingApps.empty()) return false;
  progress.processWatchList = vorlu.currentApp.blockingApps;
  const bool running = isAppRunning(vorlu, "Unknown", appName);
  progress.processWatchList.clear();
  return running;
}

void relaunchApp(Vorlu& vorlu) {
  const std::string& path = vorlu.currentApp.installedPath;
  vorlu.progress.appBinaries.clear();
  listAppBinaries(vorlu, path);
  const std::vector<std::string>& binaries = vorlu.progress.appBinaries;
  for (const std::string& binary : binaries) runShell(vorlu, fmt::format("killall {}", shellWord(binary)));
  if (isAppBundle(vorlu)) {
    openAsConsoleUser(vorlu, "-a ", path);
    return;
  }
  for (const std::string& binary : binaries) openAsConsoleUser(vorlu, "", binary);
}

}  // namespace vorlu
