#pragma once

#include "vorlu/platform/focus_monitor.h"
#include "vorlu/platform/linux/linux_host.h"

namespace vorlu {

/// The host file's screen sharing; a file without the key is a Mac without the framework.
class LinuxFocusMonitor : public FocusMonitor {
 public:
  explicit LinuxFocusMonitor(LinuxHost& host) : host_(host) {}

  std::optional<bool> screenShared() override { return host_.facts()->screenShared; }

 private:
  LinuxHost& host_;
};

}  // namespace vorlu
