#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/fake_host.h"
#include "tests/support/recorded_lines.h"
#include "tests/support/temporary_folder.h"
#include "vorlu/platform/linux/icu_calendar.h"
#include "vorlu/platform/linux/linux_file_manager.h"
#include "vorlu/platform/linux/linux_host.h"
#include "vorlu/platform/linux/linux_keychain.h"
#include "vorlu/platform/linux/linux_security.h"
#include "vorlu/platform/platform.h"
#include "vorlu/state/end_run.h"
#include "vorlu/vorlu.h"

namespace vorlu::fuzz {

/// Time stands still and sleeping takes none.
struct StandingClock : Clock {
  Seconds moment = 1772452800;  ///< 2026-03-02 12:00:00 UTC
  IcuCalendar calendar{"UTC"};
  Seconds now() override { return moment; }
  void sleep(std::chrono::milliseconds) override {}
  std::string format(Seconds when, std::string_view pattern) override { return calendar.format(when, pattern); }
  CalendarFields fields(Seconds when, Zone zone) override { return calendar.fields(when, zone); }
  std::optional<Seconds> hourOfDay(Seconds when, int hour, Zone zone) override {
    return calendar.hourOfDay(when, hour, zone);
  }
};

/// Every program prints the same text, in pieces of one size, and ends with the same status.
struct OneProgram : Processes {
  std::string output;
  std::size_t pieceSize = 1 << 20;
  int status = 0;

  ProcessResult run(const Command& command) override;
  std::unique_ptr<RunningProcess> start(const Command& command) override;
  std::optional<pid_t> launch(const Command&) override { return std::nullopt; }
  bool signal(pid_t, int) override { return false; }
  bool isAlive(pid_t) override { return false; }
  pid_t ownPid() override { return 4000; }
  pid_t parentPid() override { return 3999; }
  std::string userName() override { return "root"; }
};

/// Every request is answered with one body.
struct OneAnswer : UrlSession {
  std::string body;
  UrlReply send(const UrlRequest& request) override { return {body, UrlResponse{200, request.url}, std::nullopt}; }
  DownloadReply download(const UrlRequest&, const std::string&) override { return {{}, {}, "no network", "", {}}; }
};

struct OnePage : WebView {
  std::string page;
  std::optional<std::string> outerHTML(const std::string&, const std::string&) override { return page; }
};

/// An agent on a Mac whose programs, server and web pages say what the input says. Files, keychain and ciphers are
/// real. One for all inputs: `fresh` is a new run without a trace of the last one in what the agent reads.
class FuzzedMac {
 public:
  static FuzzedMac& shared();

  Vorlu& fresh();
  /// The status with which `flow` ended the run; nothing when it came back.
  template <class Flow>
  static std::optional<int> endOf(Flow flow) {
    try {
      flow();
    } catch (const RunEnded& ended) {
      return ended.status;
    }
    return std::nullopt;
  }
  void write(const std::string& path, const std::string& text) { test::writeFile(folder_ / path, text); }
  std::string read(const std::string& path) { return test::readFile(folder_ / path); }

 private:
  FuzzedMac();

  test::TemporaryFolder folder_;
  RootFolder root_{folder_.path()};
  LinuxHost host_{root_};

 public:
  StandingClock clock;
  LinuxFileManager files{root_, host_};
  OneProgram processes;
  OneAnswer urls;
  LinuxSecurity security;
  LinuxKeychain keychain{files, root_};
  test::FakeConsoleUser consoleUser;
  test::FakeDevice device;
  test::FakePower power;
  test::FakeCameras cameras;
  test::FakeFocusMonitor focus;
  test::FakeRunningApplications applications;
  test::RecordingSystemLog systemLog;
  test::RecordingConsole console;
  OnePage webView;

 private:
  Platform platform_{clock, files,   processes, urls,         security,  keychain, consoleUser, device,
                     power, cameras, focus,     applications, systemLog, console,  webView};
  Site site_{sealedSite, security};
  std::unique_ptr<Vorlu> vorlu_;
};

}  // namespace vorlu::fuzz
