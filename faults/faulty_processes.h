#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>
#include <string>

#include "faults/fault_plan.h"
#include "vorlu/platform/linux/descriptor.h"
#include "vorlu/platform/processes.h"

namespace vorlu::faults {

/// Children that can't be started for want of descriptors, are killed when interrupted, and fail otherwise.
class FaultyProcesses : public Processes {
 public:
  FaultyProcesses(Processes& processes, FaultPlan& plan) : processes_(processes), plan_(plan) {}

  ProcessResult run(const Command& command) override {
    return plan_.through(
        Touch::child, lineOf(command), [&] { return processes_.run(command); },
        [&](int error) {
          ProcessResult result;
          result.started = error != EMFILE;
          if (error == EMFILE) result.error = systemFailure(command.program, error).text;
          error == EINTR ? result.signal = SIGKILL : result.status = 1;
          return result;
        });
  }
  std::unique_ptr<RunningProcess> start(const Command& command) override {
    struct Ended : RunningProcess {
      ProcessResult result;
      bool isRunning() override { return false; }
      ProcessResult wait() override { return result; }
    };
    auto process = std::make_unique<Ended>();
    process->result = run(command);
    return process;
  }
  std::optional<pid_t> launch(const Command& command) override {
    return plan_.through(
        Touch::child, lineOf(command) + " &", [&] { return processes_.launch(command); },
        [](int) { return std::optional<pid_t>(); });
  }
  bool signal(pid_t pid, int signal) override { return processes_.signal(pid, signal); }
  bool isAlive(pid_t pid) override { return processes_.isAlive(pid); }
  pid_t ownPid() override { return processes_.ownPid(); }
  pid_t parentPid() override { return processes_.parentPid(); }
  std::string userName() override { return processes_.userName(); }

 private:
  static std::string lineOf(const Command& command) {
    return fmt::format("{} {}", command.program, fmt::join(command.arguments, " "));
  }

  Processes& processes_;
  FaultPlan& plan_;
};

}  // namespace vorlu::faults
