#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlu {

/// One program to start: an argument vector, never a shell line of its own. The environment is rebuilt (PATH, HOME,
/// LANG, the display's variables), standard input is closed, other descriptors are closed, umask is 022.
struct Command {
  std::string program;                 ///< absolute path
  std::vector<std::string> arguments;  ///< without the program's name
  bool mergeStandardError = true;      ///< standard error into the same pipe; otherwise it is discarded
  /// Longest run; then the program and all it started are killed.
  std::chrono::seconds limit = std::chrono::minutes(30);
  /// How long it may go on, or even begin, once the agent has been asked to end. For what may not be cut in the middle
  /// and for what releases something; the latter runs in scopes that may not throw.
  std::chrono::seconds grace{0};
  /// Receives the output as it arrives, in pieces of any size; when set, `ProcessResult::output` stays empty.
  std::function<void(std::string_view)> onOutput;
  std::size_t outputCap = std::size_t{16} << 20;  ///< bytes kept; what comes after is read and dropped
};

struct ProcessResult {
  bool started = false;
  std::string error;  ///< why it couldn't be started
  int status = -1;    ///< exit status, -1 when it ended by a signal
  int signal = 0;     ///< the signal that ended it, 0 if none
  bool timedOut = false;
  std::string output;
};

/// A program that runs beside the agent, which waits for it later. Destroying it waits, too.
class RunningProcess {
 public:
  virtual ~RunningProcess() = default;
  virtual bool isRunning() = 0;
  /// Waits for the end; once.
  virtual ProcessResult wait() = 0;
};

/// Child processes. Stands for NSTask and kill. `run`, `launch` and a wait throw `Terminated` once the agent has been
/// asked to end; a child that runs at that moment is killed with all it started, one that was launched lives on.
class Processes {
 public:
  virtual ~Processes() = default;

  /// Runs to the end. Reading ends when the child has ended, even if a grandchild keeps the pipe.
  virtual ProcessResult run(const Command& command) = 0;
  /// Begins what `run` does and comes back at once.
  virtual std::unique_ptr<RunningProcess> start(const Command& command) = 0;
  /// Starts and leaves running, without a pipe; the child outlives the agent. Its process id, or nothing.
  virtual std::optional<pid_t> launch(const Command& command) = 0;
  /// For steps between which nothing waits: throws `Terminated` once the agent has been asked to end.
  virtual void throwIfTerminated() {}
  virtual bool signal(pid_t pid, int signal) = 0;
  /// Whether a process with this id exists (kill with signal 0).
  virtual bool isAlive(pid_t pid) = 0;
  virtual pid_t ownPid() = 0;
  virtual pid_t parentPid() = 0;
  /// Name of the user that this process runs as.
  virtual std::string userName() = 0;
};

/// `/bin/zsh -c {line}`: the line must have been built with every value escaped.
inline Command shellCommand(std::string line) {
  Command command;
  command.program = "/bin/zsh";
  command.arguments = {"-c", std::move(line)};
  return command;
}

}  // namespace vorlu
