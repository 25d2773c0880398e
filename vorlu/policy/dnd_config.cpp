#include "vorlu/policy/dnd_config.h"

#include <fmt/format.h>

#include <charconv>

#include "vorlu/state/property_list.h"

namespace vorlu {
namespace {

constexpr int furtherReadings = 10;
constexpr std::chrono::milliseconds readingGap{500};
constexpr int lastReleaseWithoutFocus = 12;
constexpr std::size_t largestSettings = 1 << 20;  // the file is the user's own

}  // namespace

int majorVersion(const std::string& osVersion) {
  int major = 0;
  std::from_chars(osVersion.data(), osVersion.data() + osVersion.size(), major);
  return major;
}

bool DNDConfig::isShownInMenuBar() const {
  const auto bytes = platform_.files.read(
      fmt::format("/Users/{}/Library/Preferences/com.apple.controlcenter.plist", platform_.consoleUser.name()),
      largestSettings);
  if (!bytes) return false;
  const auto items = decodePropertyList<DndPlist>(*bytes);
  if (!items) return false;
  const bool hasFocus = majorVersion(platform_.device.osVersion()) > lastReleaseWithoutFocus;
  return (hasFocus ? items->NSStatusItemVisibleFocusModes : items->NSStatusItemVisibleDoNotDisturb).value_or(false);
}

bool DNDConfig::isDoNotDisturbActive() {
  log_("Checking if Do Not Disturb mode is enabled...");
  bool active = isShownInMenuBar();
  for (int reading = 0; reading < furtherReadings && !active; ++reading) {
    platform_.clock.sleep(readingGap);
    active = isShownInMenuBar();
  }
  return active;
}

}  // namespace vorlu
