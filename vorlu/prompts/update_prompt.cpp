#include "vorlu/prompts/update_prompt.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/prompts/app_icon.h"
#include "vorlu/state/json.h"

namespace vorlu {
namespace {

constexpr std::int64_t defaultGraceMinutes = 15;
constexpr std::int64_t longestGraceMinutes = 7 * 24 * 60;
constexpr std::int64_t shortestRefresh = 10;
constexpr std::int64_t longestRefresh = 120;

/// A text of a JSON document, in its quotes.
std::string jsonText(const std::string& text) {
  return encodeJson(text, JsonLayout::compact);
}

}  // namespace

std::vector<PromptApp> promptApps(Vorlu& vorlu, const std::vector<ApplicationInventory>& updates) {
  std::vector<PromptApp> apps;
  for (const ApplicationInventory& update : updates)
    apps.push_back({update.appName, resolveAppIcon(vorlu, update), update.latestVersion});
  return apps;
}

std::string appListJson(const std::vector<PromptApp>& apps, RowStatus status) {
  std::string rows;
  for (const PromptApp& app : apps) {
    rows +=
        fmt::format(R"({}{{"title" : {}, "icon" : {}, "status" : "{}", "statustext" : {}}})", rows.empty() ? "" : ",",
                    jsonText(app.name), jsonText(app.icon), status == RowStatus::fail ? "fail" : "pending",
                    jsonText(fmt::format("Version: {} ", app.latestVersion)));
  }
  return fmt::format(R"({{"listitem" : [{}]}})", rows);
}

std::int64_t usableGraceMinutes(std::int64_t configured) {
  return configured <= 0 ? defaultGraceMinutes : std::min(configured, longestGraceMinutes);
}

std::int64_t usableRefreshInterval(std::int64_t configured) {
  return std::clamp(configured, shortestRefresh, longestRefresh);
}

}  // namespace vorlu
