#include "vorlu/prompts/prompt_icons.h"

#include <fmt/format.h>

#include <array>

#include "vorlu/detection/letter_case.h"
#include "vorlu/detection/placeholders.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

const std::string systemResources = "/System/Library/CoreServices/CoreTypes.bundle/Contents/Resources";
const std::string appStoreIcon = "/System/Applications/App Store.app/Contents/Resources/AppIcon.icns";

/// Self Service+ first, then Self Service.
constexpr std::array selfServiceFolders = {"osx-self-service.Self-Service.resources",
                                           "com.jamfsoftware.selfservice.mac"};

bool isFile(Vorlu& vorlu, const std::string& path) {
  return !path.empty() && vorlu.platform.files.exists(path) && !vorlu.platform.files.isDirectory(path);
}

std::string overlayIcon(Vorlu& vorlu, const std::optional<std::string>& configured, std::string_view complaint) {
  if (!configured || !isInAnyCase(*configured, "selfservice")) return configured.value_or("");
  std::string icon = brandingIcon(vorlu);
  if (icon.empty()) vorlu.log(complaint);
  return icon;
}

}  // namespace

std::string chooseDialogIcon(Vorlu& vorlu, const std::optional<std::string>& customIcon) {
  for (const std::string& icon :
       {customIcon.value_or(""), brandingIcon(vorlu), appStoreIcon, paths::icons + "/update.png"})
    if (isFile(vorlu, icon)) return icon;
  return systemResources + "/ToolbarInfo.icns";
}

std::string brandingIcon(Vorlu& vorlu) {
  for (const char* folder : selfServiceFolders) {
    const std::string icon = fmt::format("/Users/{}/Library/Application Support/{}/Documents/Images/brandingimage.png",
                                         consoleUserName(vorlu), folder);
    if (isFile(vorlu, icon)) return icon;
  }
  return {};
}

std::string initialOverlayIcon(Vorlu& vorlu, const std::optional<std::string>& configured) {
  return overlayIcon(vorlu, configured,
                     "Warning: Jamf Self Service icon was specified as the update progress overlay icon but the Self "
                     "Service branding icon was not found. No overlay icon will be used.");
}

std::string progressOverlayIcon(Vorlu& vorlu, const std::optional<std::string>& configured) {
  return overlayIcon(vorlu, configured,
                     "Jamf Self Service icon was specified as the update progress overlay icon but the Self Service "
                     "branding icon was not found. No overlay icon will be used.");
}

std::string errorIcon(Vorlu& vorlu) {
  return errorIconOr(vorlu, systemResources + "/AlertStopIcon.icns");
}

std::string errorIconOr(Vorlu& vorlu, const std::string& otherwise) {
  const std::string own = paths::icons + "/Error.png";
  return isFile(vorlu, own) ? own : otherwise;
}

std::string successIcon(Vorlu& vorlu) {
  const std::string own = paths::icons + "/successIcon.png";
  return isFile(vorlu, own) ? own : "";
}

}  // namespace vorlu
