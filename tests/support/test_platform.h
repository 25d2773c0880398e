#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/fake_host.h"
#include "tests/support/faulty_file_manager.h"
#include "tests/support/recorded_lines.h"
#include "tests/support/scripted_processes.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/virtual_clock.h"
#include "vorlu/platform/linux/linux_host.h"
#include "vorlu/platform/linux/linux_keychain.h"
#include "vorlu/platform/linux/linux_security.h"
#include "vorlu/platform/linux/linux_url_session.h"
#include "vorlu/platform/platform.h"

namespace vorlu::test {

/// Pages by URL; any other page is one that never ends.
struct FakeWebView : WebView {
  std::map<std::string, std::string> pages;
  std::vector<std::string> userAgents;  ///< of each load
  std::optional<std::string> outerHTML(const std::string& url, const std::string& userAgent) override {
    userAgents.push_back(userAgent);
    const auto page = pages.find(url);
    return page == pages.end() ? std::nullopt : std::optional(page->second);
  }
};

/// A Mac for one test: a temporary folder as its root with the usual folders (and /var, /tmp, /etc as links into
/// /private), real files, transfers, ciphers and keychain, and everything else scripted.
///
/// Declare it after an in-process server: open connections are closed with it, and a server waits for them.
class TestPlatform {
 public:
  explicit TestPlatform(const TransferRules& rules = {});

  Platform& platform() { return platform_; }
  std::string root() const { return folder_.path(); }

  // Files by the agent's paths, for arranging and checking.
  void write(const std::string& path, const std::string& text) { writeFile(folder_ / path, text); }
  std::string read(const std::string& path) const { return readFile(folder_ / path); }
  bool exists(const std::string& path) { return realFiles_.exists(path); }
  void makeFolder(const std::string& path) { std::filesystem::create_directories(folder_ / path); }
  /// An installed application: Info.plist with identifier and short version, and an executable.
  void addApplication(const std::string& bundlePath, const std::string& identifier, const std::string& version);

 private:
  TemporaryFolder folder_;
  RootFolder rootFolder_{folder_.path()};
  LinuxHost host_{rootFolder_};
  LinuxFileManager realFiles_{rootFolder_, host_};

 public:
  VirtualClock clock;
  FaultyFileManager files{rootFolder_, host_};
  ScriptedProcesses processes;
  LinuxUrlSession urls;
  LinuxSecurity security;
  LinuxKeychain keychain{realFiles_, rootFolder_};
  FakeConsoleUser consoleUser;
  FakeDevice device;
  FakePower power;
  FakeCameras cameras;
  FakeFocusMonitor focus;
  FakeRunningApplications applications;
  RecordingSystemLog systemLog;
  RecordingConsole console;
  FakeWebView webView;

 private:
  Platform platform_{clock, files,   processes, urls,         security,  keychain, consoleUser, device,
                     power, cameras, focus,     applications, systemLog, console,  webView};
};

}  // namespace vorlu::test
