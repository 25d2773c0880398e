#include "vorlu/state/preferences.h"

#include <fmt/format.h>

#include "vorlu/state/preferences_path.h"
#include "vorlu/state/property_list.h"

namespace vorlu {
namespace {

/// Managed files go before local ones and the current name before the old one; a managed file of the old name goes
/// before any local file.
std::vector<std::string> searchPaths(const std::string& user) {
  return {"/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
          "/Library/Managed Preferences/com.mosk.update.preferences.plist",
          "/var/root/Library/Preferences/com.mosk.vorlu.preferences.plist",
          "/Library/Preferences/com.mosk.vorlu.preferences.plist",
          fmt::format("/Users/{}/Library/Preferences/com.mosk.vorlu.preferences.plist", user),
          "/var/root/Library/Preferences/com.mosk.update.preferences.plist",
          "/Library/Preferences/com.mosk.update.preferences.plist",
          fmt::format("/Users/{}/Library/Preferences/com.mosk.update.preferences.plist", user)};
}

}  // namespace

DayLimits RunLimits::day(int weekday) const {
  switch (weekday) {
    case 1:
      return {sunday, sundayStartTime, sundayEndTime};
    case 2:
      return {monday, mondayStartTime, mondayEndTime};
    case 3:
      return {tuesday, tuesdayStartTime, tuesdayEndTime};
    case 4:
      return {wednesday, wednesdayStartTime, wednesdayEndTime};
    case 5:
      return {thursday, thursdayStartTime, thursdayEndTime};
    case 6:
      return {friday, fridayStartTime, fridayEndTime};
    default:
      return {saturday, saturdayStartTime, saturdayEndTime};
  }
}

std::optional<std::string> preferencesPath(Platform& platform) {
  for (std::string& path : searchPaths(platform.consoleUser.name()))
    if (platform.files.exists(path)) return std::move(path);
  return std::nullopt;
}

CustomPrefs loadPreferences(Platform& platform, Log& log) {
  const auto path = preferencesPath(platform);
  const Result<std::string> bytes = path ? platform.files.read(*path) : Result<std::string>(Failure{});
  if (!bytes) return {};
  Result<CustomPrefs> prefs = decodePropertyList<CustomPrefs>(*bytes);
  if (prefs) return std::move(*prefs);
  log(fmt::format("Error whilst decoding custom preferences: {}", prefs.error()));
  return {};
}

const CustomPrefs& Preferences::loaded() {
  if (!prefs_) prefs_ = loadPreferences(platform_, log_);
  return *prefs_;
}

}  // namespace vorlu
