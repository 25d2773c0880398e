#include "vorlu/platform/linux/linux_processes.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <future>
#include <thread>

#include "vorlu/platform/linux/child_process.h"
#include "vorlu/platform/linux/descriptor.h"
#include "vorlu/platform/linux/process_tree.h"
#include "vorlu/platform/linux/termination.h"
#include "vorlu/platform/termination.h"

namespace vorlu {
namespace {

using Monotonic = std::chrono::steady_clock;

constexpr std::chrono::seconds longestLimit = std::chrono::hours(24 * 365);

struct Pipe {
  Descriptor read;
  Descriptor write;
};

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  Pipe pipe{aboveStandard(ends[0]), aboveStandard(ends[1])};
  if (!pipe.read || !pipe.write || ::fcntl(pipe.read.get(), F_SETFL, O_NONBLOCK) != 0) return std::nullopt;
  return pipe;
}

/// Takes a child's output from its pipe to the command's receiver or into the result.
class OutputReader {
 public:
  OutputReader(Descriptor pipe, const Command& command, std::string& output)
      : pipe_(std::move(pipe)), command_(command), output_(output) {}

  /// What to poll for, -1 at the end of the output.
  int descriptor() const { return pipe_.get(); }

  /// One piece of what is there; false when nothing is.
  bool readPiece() {
    const ssize_t got = uninterrupted([&] { return ::read(pipe_.get(), block_.data(), block_.size()); });
    if (got == 0) pipe_.close();
    if (got <= 0) return false;
    deliver({block_.data(), static_cast<std::size_t>(got)});
    return true;
  }

  /// What a child that has ended left in the pipe. A grandchild that goes on writing isn't followed.
  void drain() {
    for (std::size_t pieces = 0; pipe_ && pieces < drainPieces && readPiece();) ++pieces;
  }

 private:
  static constexpr std::size_t drainPieces = 16;  // a pipe holds one, or sixteen when somebody widened it

  void deliver(std::string_view piece) {
    if (command_.onOutput) return command_.onOutput(piece);
    output_.append(piece.substr(0, command_.outputCap - std::min(command_.outputCap, output_.size())));
  }

  Descriptor pipe_;
  const Command& command_;
  std::string& output_;
  std::array<char, 65536> block_{};
};

/// pidfd_open, which this C library declares wrongly for C++. The descriptor is closed in programs by itself.
int processDescriptor(pid_t pid) {
  return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
}

/// A started child. One that nobody waited for, because an exception passed by, is killed with all it started.
class Child {
 public:
  explicit Child(pid_t pid) : pid_(pid), ended_(processDescriptor(pid)) {}
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (!waited_) kill(), wait();
  }

  /// Readable once the child has ended.
  int descriptor() const { return ended_.get(); }
  void kill() { killTree(pid_); }

  siginfo_t wait() {
    siginfo_t how{};
    uninterrupted([&] { return ::waitid(P_PID, static_cast<id_t>(pid_), &how, WEXITED); });
    waited_ = true;
    return how;
  }

 private:
  pid_t pid_;
  Descriptor ended_;
  bool waited_ = false;
};

enum class RunEnd { byItself, timedOut, stopped };

/// Hands output on until the child has ended or may go on no longer: its limit is over, it can't be watched, or the
/// agent was asked to end and the command's grace is over. A command without grace throws then.
RunEnd follow(const Child& child, OutputReader& output, const Command& command) {
  auto deadline = Monotonic::now() + std::min(command.limit, longestLimit);
  int termination = terminationDescriptor();
  while (child.descriptor() >= 0) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Monotonic::now()).count();
    if (left <= 0) return termination < 0 && terminationAsked() ? RunEnd::stopped : RunEnd::timedOut;
    std::array<pollfd, 3> waits = {pollfd{child.descriptor(), POLLIN, 0}, pollfd{output.descriptor(), POLLIN, 0},
                                   pollfd{termination, POLLIN, 0}};
    constexpr decltype(left) longestPoll = 60'000;
    if (::poll(waits.data(), waits.size(), static_cast<int>(std::min(left, longestPoll))) <= 0) continue;
    if (waits[0].revents != 0) return RunEnd::byItself;
    if (waits[1].revents != 0) output.readPiece();
    if (waits[2].revents == 0) continue;
    if (command.grace == std::chrono::seconds::zero()) throw Terminated{};
    deadline = std::min(deadline, Monotonic::now() + command.grace);
    termination = -1;
  }
  return RunEnd::timedOut;
}

void recordEnd(const siginfo_t& how, ProcessResult& result) {
  if (how.si_code == CLD_EXITED)
    result.status = how.si_status;
  else
    result.signal = how.si_status;
}

/// A run on a thread of its own.
class RunOnThread : public RunningProcess {
 public:
  RunOnThread(Processes& processes, const Command& command)
      : run_(std::async(std::launch::async, [&processes, command] { return processes.run(command); })) {}
  bool isRunning() override { return run_.wait_for(std::chrono::seconds(0)) != std::future_status::ready; }
  ProcessResult wait() override { return run_.get(); }

 private:
  std::future<ProcessResult> run_;
};

}  // namespace

ProcessResult LinuxProcesses::run(const Command& command) {
  if (command.grace == std::chrono::seconds::zero()) throwIfTerminated();
  ProcessResult result;
  auto pipe = makePipe();
  if (!pipe) {
    result.error = systemFailure(command.program, errno).text;
    return result;
  }
  const auto spawned = spawnChild(command, pipe->write.get());
  if (!spawned) {
    result.error = spawned.error();
    return result;
  }
  Child child(*spawned);
  pipe->write.close();
  result.started = true;
  OutputReader output(std::move(pipe->read), command, result.output);
  const RunEnd end = follow(child, output, command);
  result.timedOut = end == RunEnd::timedOut;
  if (end != RunEnd::byItself) child.kill();
  output.drain();
  recordEnd(child.wait(), result);
  return result;
}

std::unique_ptr<RunningProcess> LinuxProcesses::start(const Command& command) {
  return std::make_unique<RunOnThread>(*this, command);
}

std::optional<pid_t> LinuxProcesses::launch(const Command& command) {
  throwIfTerminated();
  const auto spawned = spawnChild(command, -1);
  if (!spawned) return std::nullopt;
  // Only its end is waited for, so that no dead process shows to those who look for its name.
  std::thread([pid = *spawned] { uninterrupted([&] { return ::waitpid(pid, nullptr, 0); }); }).detach();
  return *spawned;
}

void LinuxProcesses::throwIfTerminated() {
  if (terminationAsked()) throw Terminated{};
}

bool LinuxProcesses::signal(pid_t pid, int signal) {
  return pid > 0 && ::kill(pid, signal) == 0;
}

bool LinuxProcesses::isAlive(pid_t pid) {
  return pid > 0 && (::kill(pid, 0) == 0 || errno == EPERM);
}

pid_t LinuxProcesses::ownPid() {
  return ::getpid();
}

pid_t LinuxProcesses::parentPid() {
  return ::getppid();
}

std::string LinuxProcesses::userName() {
  return ownUser().name;
}

}  // namespace vorlu
