#pragma once

#include "vorlu/platform/cameras.h"
#include "vorlu/platform/clock.h"
#include "vorlu/platform/console.h"
#include "vorlu/platform/console_user.h"
#include "vorlu/platform/device.h"
#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/focus_monitor.h"
#include "vorlu/platform/keychain.h"
#include "vorlu/platform/power.h"
#include "vorlu/platform/processes.h"
#include "vorlu/platform/running_applications.h"
#include "vorlu/platform/security.h"
#include "vorlu/platform/system_log.h"
#include "vorlu/platform/url_session.h"
#include "vorlu/platform/web_view.h"

namespace vorlu {

/// Everything the agent asks of a Mac. The references outlive the run.
struct Platform {
  Clock& clock;
  FileManager& files;
  Processes& processes;
  UrlSession& urls;
  Security& security;
  Keychain& keychain;
  ConsoleUser& consoleUser;
  Device& device;
  Power& power;
  Cameras& cameras;
  FocusMonitor& focus;
  RunningApplications& applications;
  SystemLog& systemLog;
  Console& console;
  WebView& webView;
};

}  // namespace vorlu
