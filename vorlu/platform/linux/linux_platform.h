#pragma once

#include <string>

#include "vorlu/platform/linux/linux_cameras.h"
#include "vorlu/platform/linux/linux_clock.h"
#include "vorlu/platform/linux/linux_console.h"
#include "vorlu/platform/linux/linux_console_user.h"
#include "vorlu/platform/linux/linux_device.h"
#include "vorlu/platform/linux/linux_file_manager.h"
#include "vorlu/platform/linux/linux_focus_monitor.h"
#include "vorlu/platform/linux/linux_host.h"
#include "vorlu/platform/linux/linux_keychain.h"
#include "vorlu/platform/linux/linux_power.h"
#include "vorlu/platform/linux/linux_processes.h"
#include "vorlu/platform/linux/linux_running_applications.h"
#include "vorlu/platform/linux/linux_security.h"
#include "vorlu/platform/linux/linux_system_log.h"
#include "vorlu/platform/linux/linux_url_session.h"
#include "vorlu/platform/linux/linux_web_view.h"
#include "vorlu/platform/platform.h"

namespace vorlu {

/// The simulated Mac whose "/" is `root`. Making one reads and starts nothing: each part does its work when it is first
/// asked.
class LinuxPlatform {
 public:
  explicit LinuxPlatform(const std::string& root = "/");
  LinuxPlatform(const LinuxPlatform&) = delete;
  LinuxPlatform& operator=(const LinuxPlatform&) = delete;

  Platform& platform() { return platform_; }

 private:
  RootFolder root_;
  LinuxHost host_;
  LinuxClock clock_;
  LinuxFileManager files_;
  LinuxProcesses processes_;
  LinuxUrlSession urls_;
  LinuxSecurity security_;
  LinuxKeychain keychain_;
  LinuxConsoleUser consoleUser_;
  LinuxDevice device_;
  LinuxPower power_;
  LinuxCameras cameras_;
  LinuxFocusMonitor focus_;
  LinuxRunningApplications applications_;
  LinuxSystemLog systemLog_;
  LinuxConsole console_;
  LinuxWebView webView_;
  Platform platform_;
};

}  // namespace vorlu
