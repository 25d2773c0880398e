#include "vorlu/cli/old_installations.h"

#include <fmt/format.h>

#include <initializer_list>
#include <string>

#include "vorlu/server/server_texts.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

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

}  // namespace

void removeOldInstallations(Vorlu& vorlu) {
  for (const char* path : {"/var/tmp/com.mosk.update.UI.log", "/var/tmp/com.mosk.vorlu.UI.log"}) {
    removeWhereItExists(vorlu, path);
  }
  const std::string oldName = decryptString(vorlu, SiteText::oldName);
  if (isPlainName(oldName)) {
    removeWhereItExists(vorlu, fmt::format("/Library/Application Support/MOSK/{}", oldName));
  }
  removeWhereItExists(vorlu, "/Library/Application Support/MOSK/Bin/moskupdate");

  const std::string oldDir = decryptString(vorlu, SiteText::oldDir);
  const std::string toolName = decryptString(vorlu, SiteText::toolName);
  const std::string oldTool = fmt::format("/usr/local/{}/{}", oldDir, toolName);
  if (isPlainName(oldDir) && isPlainName(toolName) && vorlu.platform.files.info(oldTool)) {
    removeWhereItExists(vorlu, oldTool);
    removeWhereItExists(vorlu, fmt::format("/etc/paths.d/{}", toolName));
    for (const char* path : {"/usr/local/sal", "/Library/LaunchDaemons/com.salopensource.sal.random.runner.plist",
                             "/Library/LaunchDaemons/com.salopensource.sal.runner.plist"}) {
      removeWhereItExists(vorlu, path);
    }
  }
  for (const char* path : {"/Library/LaunchAgents/com.mosk.update.loginwindow.plist",
                           "/Library/LaunchAgents/com.mosk.update.logoutagent.plist"}) {
    removeWhereItExists(vorlu, path);
  }
  if (isPlainName(toolName)) removeWhereItExists(vorlu, fmt::format("/usr/local/bin/{}", toolName));
}

}  // namespace vorlu
