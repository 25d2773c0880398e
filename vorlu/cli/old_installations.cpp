#include "vorlu/cli/old_installations.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "vorlu/server/server_texts.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::string_view makerFolder = "/Library/Application Support/MOSK";

void removeWhereItExists(Vorlu& vorlu, const std::string& path) {
  FileManager& files = vorlu.platform.files;
  if (!files.info(path)) return;
  const Status removed = files.remove(path);
  if (!removed) vorlu.log(fmt::format("Could not remove file at path: {}", path), silent);
}

/// A plain name of one path component. Anything else, an empty name above all, would aim at another folder.
bool isPlainName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

/// Whether a folder holds more than is always there: only then is a name deciphered to look for.
bool holdsOthers(Vorlu& vorlu, const std::string& folder, std::initializer_list<std::string_view> own) {
  const Result<std::vector<std::string>> names = vorlu.platform.files.list(folder);
  if (!names) return vorlu.platform.files.exists(folder);
  return std::any_of(names->begin(), names->end(),
                     [own](const std::string& name) { return std::find(own.begin(), own.end(), name) == own.end(); });
}

void removeOldFolder(Vorlu& vorlu) {
  const std::string oldName = decryptString(vorlu, SiteText::oldName);
  if (isPlainName(oldName)) removeWhereItExists(vorlu, fmt::format("{}/{}", makerFolder, oldName));
}

/// The tool of older versions, and the other management tool that came with it.
void removeOldTool(Vorlu& vorlu) {
  const std::string oldDir = decryptString(vorlu, SiteText::oldDir);
  const std::string toolName = decryptString(vorlu, SiteText::toolName);
  const std::string oldTool = fmt::format("/usr/local/{}/{}", oldDir, toolName);
  if (!isPlainName(oldDir) || !isPlainName(toolName) || !vorlu.platform.files.info(oldTool)) return;
  removeWhereItExists(vorlu, oldTool);
  removeWhereItExists(vorlu, fmt::format("/etc/paths.d/{}", toolName));
  for (const char* path : {"/usr/local/sal", "/Library/LaunchDaemons/com.salopensource.sal.random.runner.plist",
                           "/Library/LaunchDaemons/com.salopensource.sal.runner.plist"}) {
    removeWhereItExists(vorlu, path);
  }
}

void removeOldExecutable(Vorlu& vorlu) {
  const std::string toolName = decryptString(vorlu, SiteText::toolName);
  if (isPlainName(toolName)) removeWhereItExists(vorlu, fmt::format("/usr/local/bin/{}", toolName));
}

}  // namespace

void removeOldInstallations(Vorlu& vorlu) {
  for (const char* path : {"/var/tmp/com.mosk.update.UI.log", "/var/tmp/com.mosk.vorlu.UI.log"}) {
    removeWhereItExists(vorlu, path);
  }
  if (holdsOthers(vorlu, std::string(makerFolder), {"Vorlu"})) removeOldFolder(vorlu);
  removeWhereItExists(vorlu, "/Library/Application Support/MOSK/Bin/moskupdate");
  if (holdsOthers(vorlu, "/usr/local", {"bin"})) removeOldTool(vorlu);
  for (const char* path : {"/Library/LaunchAgents/com.mosk.update.loginwindow.plist",
                           "/Library/LaunchAgents/com.mosk.update.logoutagent.plist"}) {
    removeWhereItExists(vorlu, path);
  }
  if (holdsOthers(vorlu, "/usr/local/bin", {"vorlu", "vorlu-ui", "vorluonline"})) removeOldExecutable(vorlu);
}

}  // namespace vorlu
