#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "ctl/quiet_parts.h"
#include "ctl/rehearsal_plan.h"
#include "vorlu/platform/linux/icu_calendar.h"
#include "vorlu/platform/linux/linux_file_manager.h"
#include "vorlu/platform/linux/linux_host.h"
#include "vorlu/platform/linux/linux_security.h"
#include "vorlu/platform/platform.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/state/preferences.h"

namespace vorlu::ctl {

/// A clock that moves on when somebody waits, and takes no time for it.
class RehearsalClock : public Clock {
 public:
  explicit RehearsalClock(const std::string& zone) : calendar_(zone) {}
  void moveTo(Seconds moment) { now_ = moment; }

  Seconds now() override { return now_; }
  void sleep(std::chrono::milliseconds duration) override { now_ += std::chrono::duration<double>(duration).count(); }
  std::string format(Seconds when, std::string_view pattern) override { return calendar_.format(when, pattern); }
  CalendarFields fields(Seconds when, Zone zone) override { return calendar_.fields(when, zone); }
  std::optional<Seconds> hourOfDay(Seconds when, int hour, Zone zone) override {
    return calendar_.hourOfDay(when, hour, zone);
  }

 private:
  Seconds now_ = 0;
  IcuCalendar calendar_;
};

/// Files in a throw-away folder. The log isn't kept and nothing is synced: no run of a rehearsal outlives the program.
class RehearsalFiles : public LinuxFileManager {
 public:
  RehearsalFiles(const RootFolder& root, LinuxHost& host) : LinuxFileManager(root, host), root_(root) {}
  Status writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) override;
  Status append(const std::string& /*path*/, std::string_view /*data*/, const Ownership& /*ownership*/) override {
    return success();
  }
  std::optional<std::int64_t> freeDiskSpace() override { return std::nullopt; }

 private:
  RootFolder root_;
};

/// A prompt that the user has seen.
struct SeenPrompt {
  std::int64_t time = 0;
  bool hasGrace = false;  ///< the grace period's; else the one with two buttons
  UserAnswer answer = UserAnswer::update;
  std::optional<std::int64_t> left;  ///< deferrals that were left, where they are counted
};

/// The Mac of a rehearsal: a folder of its own with one installed application, a virtual clock, and programs that do
/// what their namesakes would do to that application. Its user answers prompts by the plan.
class RehearsalMac {
 public:
  /// `prefs` are the plan's, decoded. Throws when the folder can't be made.
  RehearsalMac(const RehearsalPlan& plan, const CustomPrefs& prefs);
  ~RehearsalMac();
  RehearsalMac(const RehearsalMac&) = delete;
  RehearsalMac& operator=(const RehearsalMac&) = delete;

  Platform& platform() { return platform_; }
  const std::vector<AppBlueprints>& catalog() const { return catalog_; }

  /// A new version comes out, and its installer lies in the cache.
  void release();
  /// Whether the user is at the Mac by the clock.
  bool isUserThere();
  bool isOutdated() const { return installed_ != released_; }
  std::string installedVersion() const { return versionOf(installed_); }
  std::string releasedVersion() const { return versionOf(released_); }
  /// The next prompt takes the next answer. The user opens the application if it isn't open.
  void beginRun();
  /// What the user has seen since the last call.
  std::vector<SeenPrompt> takeSeen() { return std::exchange(seen_, {}); }

  RehearsalClock clock;

 private:
  class Programs;
  class Prompt;
  struct Person : ConsoleUser {
    explicit Person(RehearsalMac& mac) : mac_(mac) {}
    std::string name() override { return mac_.isUserThere() ? "user" : "loginwindow"; }
    uid_t uid() override { return 501; }
    RehearsalMac& mac_;
  };
  struct Applications : RunningApplications {
    explicit Applications(RehearsalMac& mac) : mac_(mac) {}
    bool isRunning(const std::string& bundleIdentifier) override;
    std::vector<std::string> active() override { return {}; }
    RehearsalMac& mac_;
  };
  struct Hardware : Device {
    std::optional<int> cpuType() override { return 12; }
    std::string osVersion() override { return "14.5.0"; }
    std::optional<std::string> serialNumber() override { return std::nullopt; }
    std::string computerName() override { return ""; }
    std::optional<std::string> productDescription() override { return std::nullopt; }
  };
  struct Awake : Power {
    std::optional<std::uint32_t> createNoDisplaySleepAssertion(const std::string& /*reason*/) override { return 1; }
    void releaseAssertion(std::uint32_t /*id*/) override {}
    std::optional<std::map<int, std::vector<PowerAssertion>>> assertionsByProcess() override { return std::nullopt; }
  };
  struct NoCameras : Cameras {
    std::vector<Camera> list() override { return {}; }
  };
  struct NoFocus : FocusMonitor {
    std::optional<bool> screenShared() override { return false; }
  };

  static std::string versionOf(int number) { return std::to_string(number) + ".0"; }
  void makeFolders();
  void writeApplication();
  void addToCatalog();
  void write(const std::string& path, std::string_view text);
  UserAnswer nextAnswer();

  const RehearsalPlan& plan_;
  const CustomPrefs& prefs_;
  std::string folder_;
  RootFolder root_;
  LinuxHost host_{root_};
  RehearsalFiles files_{root_, host_};
  LinuxSecurity security_;
  std::unique_ptr<Programs> programs_;
  NoUrlSession urls_;
  ClosedKeychain keychain_;
  Person person_{*this};
  Hardware hardware_;
  Awake awake_;
  NoCameras cameras_;
  NoFocus focus_;
  Applications applications_{*this};
  SilentSystemLog systemLog_;
  SilentConsole console_;
  NoWebView webView_;
  Platform platform_;

  std::vector<AppBlueprints> catalog_;
  std::deque<UserAnswer> answers_;
  std::optional<UserAnswer> answerOfRun_;
  std::vector<SeenPrompt> seen_;
  int installed_ = 1;
  int released_ = 1;
  bool isOpen_ = true;
};

}  // namespace vorlu::ctl
