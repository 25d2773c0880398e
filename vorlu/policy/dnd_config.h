#pragma once

#include <optional>
#include <string>

#include "vorlu/platform/platform.h"
#include "vorlu/state/log.h"

namespace vorlu {

/// Control Center's menu bar items, from the console user's preferences.
struct DndPlist {
  std::optional<bool> NSStatusItemVisibleFocusModes;
  std::optional<bool> NSStatusItemVisibleDoNotDisturb;
  static constexpr auto fields() {
    return std::array{field<&DndPlist::NSStatusItemVisibleFocusModes>("NSStatusItemVisibleFocusModes"),
                      field<&DndPlist::NSStatusItemVisibleDoNotDisturb>("NSStatusItemVisibleDoNotDisturb")};
  }
};

/// What the console user's Mac tells of Do Not Disturb and of a shared screen.
class DNDConfig {
 public:
  DNDConfig(Platform& platform, Log& log) : platform_(platform), log_(log) {}

  /// Whether Do Not Disturb or a Focus is on. The menu bar shows it with a delay, so a "no" is asked again for 5
  /// seconds. What can't be read counts as off.
  bool isDoNotDisturbActive();
  /// Nothing without the framework that knows.
  std::optional<bool> isScreenShared() { return platform_.focus.screenShared(); }

 private:
  bool isShownInMenuBar() const;

  Platform& platform_;
  Log& log_;
};

/// The number before the first dot of a macOS version; 0 when there is none.
int majorVersion(const std::string& osVersion);

}  // namespace vorlu
