#pragma once

#include <optional>
#include <set>
#include <string>

#include "ctl/quiet_parts.h"
#include "ctl/read_only_files.h"
#include "vorlu/platform/platform.h"

namespace vorlu::ctl {

/// Another clock, or the moment that it was moved to. Nobody waits by it.
class MovableClock : public Clock {
 public:
  explicit MovableClock(Clock& clock) : clock_(clock) {}

  void moveTo(Seconds moment) { moment_ = moment; }
  /// Back to the present.
  void release() { moment_.reset(); }

  Seconds now() override { return moment_ ? *moment_ : clock_.now(); }
  void sleep(std::chrono::milliseconds /*duration*/) override {}
  std::string format(Seconds when, std::string_view pattern) override { return clock_.format(when, pattern); }
  CalendarFields fields(Seconds when, Zone zone) override { return clock_.fields(when, zone); }
  std::optional<Seconds> hourOfDay(Seconds when, int hour, Zone zone) override {
    return clock_.hourOfDay(when, hour, zone);
  }

 private:
  Clock& clock_;
  std::optional<Seconds> moment_;
};

/// Starts nothing but the search for processes by name, and what was allowed. Signals nobody.
class GuardedProcesses : public Processes {
 public:
  explicit GuardedProcesses(Processes& processes) : processes_(processes) {}

  /// Allows one more line of a shell, or one more program.
  void allow(const std::string& lineOrProgram) { allowed_.insert(lineOrProgram); }

  ProcessResult run(const Command& command) override;
  std::unique_ptr<RunningProcess> start(const Command& command) override;
  std::optional<pid_t> launch(const Command& /*command*/) override { return std::nullopt; }
  bool signal(pid_t /*pid*/, int /*signal*/) override { return false; }
  bool isAlive(pid_t pid) override { return processes_.isAlive(pid); }
  pid_t ownPid() override { return processes_.ownPid(); }
  pid_t parentPid() override { return processes_.parentPid(); }
  std::string userName() override { return processes_.userName(); }

 private:
  bool isAllowed(const Command& command) const;

  Processes& processes_;
  std::set<std::string> allowed_{"/usr/bin/pgrep"};
};

/// Assertions are read and none is made.
class ReadOnlyPower : public Power {
 public:
  explicit ReadOnlyPower(Power& power) : power_(power) {}
  std::optional<std::uint32_t> createNoDisplaySleepAssertion(const std::string& /*reason*/) override {
    return std::nullopt;
  }
  void releaseAssertion(std::uint32_t /*id*/) override {}
  std::optional<std::map<int, std::vector<PowerAssertion>>> assertionsByProcess() override {
    return power_.assertionsByProcess();
  }

 private:
  Power& power_;
};

/// A Mac on which the agent's own functions can be asked without changing anything: no file, no process, no word on a
/// console, no request.
class ReadOnlyMac {
 public:
  explicit ReadOnlyMac(Platform& mac)
      : clock(mac.clock),
        processes(mac.processes),
        files_(mac.files),
        power_(mac.power),
        platform_{clock,     files_,           processes,  urls_,    mac.security,
                  keychain_, mac.consoleUser,  mac.device, power_,   mac.cameras,
                  mac.focus, mac.applications, systemLog_, console_, webView_} {}
  ReadOnlyMac(const ReadOnlyMac&) = delete;
  ReadOnlyMac& operator=(const ReadOnlyMac&) = delete;

  Platform& platform() { return platform_; }

  MovableClock clock;
  GuardedProcesses processes;

 private:
  ReadOnlyFiles files_;
  ReadOnlyPower power_;
  NoUrlSession urls_;
  ClosedKeychain keychain_;
  SilentSystemLog systemLog_;
  SilentConsole console_;
  NoWebView webView_;
  Platform platform_;
};

}  // namespace vorlu::ctl
