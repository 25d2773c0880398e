#include "vorlu/prompts/app_icon.h"

#include <fmt/format.h>

#include <chrono>

#include "vorlu/detection/app_inventory.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// Whether a request for the icon is answered with one: a server that can't be reached must not hold a prompt up.
bool answers(Vorlu& vorlu, const std::string& url) {
  if (url.empty()) return false;
  UrlRequest request;
  request.url = replacedAll(url, " ", "%20");
  request.timeout = std::chrono::seconds(10);
  const UrlReply reply = vorlu.platform.urls.send(request);
  return !reply.error && reply.response && reply.response->status == 200 && reply.data && !reply.data->empty();
}

}  // namespace

std::string resolveAppIcon(Vorlu& vorlu, const AppIconSource& app) {
  FileManager& files = vorlu.platform.files;
  const std::string local = paths::appIcons + "/" + app.localIcon;
  const bool isPlainName = !app.localIcon.empty() && app.localIcon.find('/') == std::string::npos;
  if (isPlainName && files.exists(local) && !files.isDirectory(local)) return local;
  if (answers(vorlu, app.cloudIcon)) {
    vorlu.log(fmt::format("{} icon not found locally. Using icon at URL {} instead", app.appName, app.cloudIcon),
              silent);
    return app.cloudIcon;
  }
  const std::string fallback = paths::icons + "/unknownIcon.png";
  if (!files.exists(fallback)) return {};
  vorlu.log(fmt::format("Warning: No icon could be found for {}. Using {} instead", app.appName, fallback));
  return fallback;
}

std::string resolveAppIcon(Vorlu& vorlu, const CurrentApp& app) {
  return resolveAppIcon(vorlu, AppIconSource{app.appName, app.localIcon, app.cloudIcon});
}

std::string resolveAppIcon(Vorlu& vorlu, const ApplicationInventory& update) {
  const AppBlueprints* entry = matchApp(vorlu, update.appIdentifier);
  return resolveAppIcon(vorlu, AppIconSource{update.appName, entry ? orEmpty(entry->localIcon) : "",
                                             entry ? orEmpty(entry->cloudIcon) : ""});
}

}  // namespace vorlu
