#include "vorlu/prompts/app_icon.h"

#include <fmt/format.h>

#include "vorlu/detection/app_inventory.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

struct BundleIcon {
  std::optional<std::string> CFBundleIconFile;
  static constexpr auto fields() { return std::array{field<&BundleIcon::CFBundleIconFile>("CFBundleIconFile")}; }
};

/// The icon inside an application's bundle; empty when there is none.
std::string iconOfBundle(FileManager& files, const std::string& bundle) {
  if (bundle.empty()) return {};
  const auto bytes = files.read(bundle + "/Contents/Info.plist");
  const auto info = bytes ? decodePropertyList<BundleIcon>(*bytes) : Result<BundleIcon>(bytes.failure());
  std::string name = info ? info->CFBundleIconFile.value_or("") : "";
  if (name.empty() || name.find('/') != std::string::npos) return {};
  if (name.find('.') == std::string::npos) name += ".icns";
  const std::string icon = fmt::format("{}/Contents/Resources/{}", bundle, name);
  return files.exists(icon) ? icon : "";
}

}  // namespace

std::string resolveAppIcon(Vorlu& vorlu, const AppIconSource& app) {
  FileManager& files = vorlu.platform.files;
  const std::string local = paths::appIcons + "/" + app.localIcon;
  if (!app.localIcon.empty() && files.exists(local)) return local;
  const std::string own = iconOfBundle(files, app.installedPath);
  if (!own.empty()) return own;
  const std::string fallback = paths::icons + "/unknownIcon.png";
  if (!files.exists(fallback)) return {};
  vorlu.log(fmt::format("Warning: No icon could be found for {}. Using {} instead", app.appName, fallback));
  return fallback;
}

std::string resolveAppIcon(Vorlu& vorlu, const CurrentApp& app) {
  return resolveAppIcon(vorlu, AppIconSource{app.appName, app.localIcon, app.cloudIcon, app.installedPath});
}

std::string resolveAppIcon(Vorlu& vorlu, const ApplicationInventory& update) {
  const AppBlueprints* entry = matchApp(vorlu, update.appIdentifier);
  return resolveAppIcon(vorlu, AppIconSource{update.appName, entry ? orEmpty(entry->localIcon) : "",
                                             entry ? orEmpty(entry->cloudIcon) : "", update.installedPath});
}

}  // namespace vorlu
