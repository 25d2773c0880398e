#include "ctl/read_only_mac.h"

namespace vorlu::ctl {
namespace {

/// A program that was never started.
class Refused : public RunningProcess {
 public:
  bool isRunning() override { return false; }
  ProcessResult wait() override {
    ProcessResult result;
    result.error = "nothing is started by a mere look";
    return result;
  }
};

}  // namespace

bool GuardedProcesses::isAllowed(const Command& command) const {
  return allowed_.contains(command.program) ||
         (command.arguments.size() == 2 && command.arguments[0] == "-c" && allowed_.contains(command.arguments[1]));
}

ProcessResult GuardedProcesses::run(const Command& command) {
  return isAllowed(command) ? processes_.run(command) : Refused().wait();
}

std::unique_ptr<RunningProcess> GuardedProcesses::start(const Command& command) {
  return isAllowed(command) ? processes_.start(command) : std::make_unique<Refused>();
}

}  // namespace vorlu::ctl
