#include "vorlu/platform/linux/linux_processes.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "tests/support/scripted_processes.h"
#include "tests/support/temporary_folder.h"
#include "vorlu/platform/linux/termination.h"
#include "vorlu/platform/termination.h"

namespace vorlu::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

Command script(const std::string& line) {
  return commandOf("/bin/sh", {"-c", line});
}

/// Waits until the process is gone or a dead entry nobody waited for yet, at most five seconds.
bool ends(pid_t pid) {
  for (int i = 0; i < 500; ++i) {
    const std::string status = readFile("/proc/" + std::to_string(pid) + "/stat");
    if (status.empty() || status.find(") Z") != std::string::npos) return true;
    std::this_thread::sleep_for(10ms);
  }
  return false;
}

TEST(LinuxProcesses, ReportsHowAChildEnded) {
  LinuxProcesses processes;
  const auto failed = processes.run(script("echo out; echo err >&2; exit 3"));
  EXPECT_TRUE(failed.started && !failed.timedOut && failed.signal == 0);
  EXPECT_EQ(failed.status, 3);
  EXPECT_EQ(failed.output, "out\nerr\n");
  Command capped = script("printf 123456789; echo err >&2");
  capped.mergeStandardError = false;
  capped.outputCap = 4;
  EXPECT_EQ(processes.run(capped).output, "1234");
  const auto killed = processes.run(script("kill -9 $$"));
  EXPECT_EQ(killed.status, -1);
  EXPECT_EQ(killed.signal, SIGKILL);
  EXPECT_EQ(processes.run(commandOf("/bin/echo", {"a b", "", "$HOME"})).output, "a b  $HOME\n");
  const auto later = processes.start(script("sleep 0.1; exit 4"));
  EXPECT_TRUE(later->isRunning());
  EXPECT_EQ(later->wait().status, 4);
  const auto absent = processes.run(commandOf("/no/such/program"));
  EXPECT_FALSE(absent.started);
  EXPECT_EQ(absent.error, "/no/such/program: No such file or directory");
}

TEST(LinuxProcesses, ChildGetsACleanWorld) {
  const auto hostile = {"LD_PRELOAD_TEST", "BASH_ENV", "ENV", "IFS", "SECRET"};
  for (const char* name : hostile) ::setenv(name, "bad", 1);
  ::setenv("TZ", "Europe/London", 1);
  const int leaked = ::open("/dev/null", O_RDONLY);  // without close-on-exec
  const auto environment = LinuxProcesses().run(commandOf("/usr/bin/env")).output;
  EXPECT_THAT(environment, AllOf(HasSubstr("PATH=/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin\n"), HasSubstr("HOME=/"),
                                 HasSubstr("LANG=en_US.UTF-8\n"), HasSubstr("TZ=Europe/London\n")));
  EXPECT_THAT(environment, Not(HasSubstr("bad")));
  const auto world = LinuxProcesses().run(script("ls /proc/self/fd | wc -l; umask; pwd; read line || echo closed"));
  // The three standard descriptors and the one that ls reads the folder with.
  EXPECT_EQ(world.output, "4\n0022\n/\nclosed\n");
  ::close(leaked);
  const auto before = ::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(LinuxProcesses().run(script("kill -PIPE $$; echo survived")).signal, SIGPIPE);
  ::signal(SIGPIPE, before);
  ::unsetenv("TZ");
  for (const char* name : hostile) ::unsetenv(name);
}

TEST(LinuxProcesses, OutputStreamsWhileTheChildRuns) {
  // The child waits for what its first output makes the receiver do.
  const TemporaryFolder folder;
  const std::string signal = folder / "/go";
  Command command = script("echo first; while [ ! -e " + signal + " ]; do sleep 0.01; done; echo second");
  command.limit = 20s;
  std::string seen;
  command.onOutput = [&](std::string_view piece) {
    seen += piece;
    writeFile(signal, "");
  };
  const auto result = LinuxProcesses().run(command);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(seen, "first\nsecond\n");
}

TEST(LinuxProcesses, AGrandchildWithThePipeDoesNotHoldTheRun) {
  const auto begin = std::chrono::steady_clock::now();
  const auto result = LinuxProcesses().run(script("sleep 60 & echo $!"));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
  EXPECT_EQ(result.status, 0);
  const pid_t grandchild = std::stoi(result.output);
  EXPECT_TRUE(LinuxProcesses().isAlive(grandchild));
  EXPECT_TRUE(LinuxProcesses().signal(grandchild, SIGKILL));
}

TEST(LinuxProcesses, TheLimitKillsAllThatWasStarted) {
  Command command =
      script("trap '' TERM; sleep 60 & echo $!; setsid sh -c 'echo $$; (sleep 60 & echo $!); sleep 60' & wait");
  command.limit = 1s;
  const auto result = LinuxProcesses().run(command);
  EXPECT_TRUE(result.timedOut);
  EXPECT_EQ(result.signal, SIGKILL);
  std::istringstream lines(result.output);
  int count = 0;
  for (pid_t pid = 0; lines >> pid; ++count) EXPECT_TRUE(ends(pid)) << pid;
  EXPECT_EQ(count, 3);
}

TEST(LinuxProcesses, LaunchedChildrenAreDetachedAndLeaveNoZombie) {
  LinuxProcesses processes;
  const auto pid = processes.launch(commandOf("/bin/sleep", {"60"}));
  ASSERT_TRUE(pid);
  EXPECT_TRUE(processes.isAlive(*pid));
  EXPECT_EQ(::getsid(*pid), *pid);
  EXPECT_TRUE(processes.signal(*pid, SIGTERM));
  for (int i = 0; i < 500 && processes.isAlive(*pid); ++i) std::this_thread::sleep_for(10ms);
  EXPECT_FALSE(processes.isAlive(*pid)) << "its entry is gone, too";
  EXPECT_FALSE(processes.launch(commandOf("/no/such/program")));
}

TEST(LinuxProcesses, SignalsNeverReachGroups) {
  for (const pid_t pid : {0, -1, -::getpid()}) {
    EXPECT_FALSE(LinuxProcesses().signal(pid, SIGTERM)) << pid;
    EXPECT_FALSE(LinuxProcesses().isAlive(pid)) << pid;
  }
}

/// An agent whose threads wait in all ways, for ever or until it is asked to end.
[[noreturn]] void waitInAllWays(const std::string& mark) {
  installSignalHandling();
  LinuxProcesses processes;
  processes.launch(script("sleep 60; : launched " + mark));
  const auto untilStopped = [&](const std::string& line) {
    try {
      while (true) line.empty() ? sleepUnlessTerminated(60s) : void(processes.run(script(line + "; : " + mark)));
    } catch (const Terminated&) {
    }
  };
  std::vector<std::thread> threads;
  for (const std::string& line :
       std::vector<std::string>{"", "sleep 60", "true", "setsid sh -c 'sleep 60; : " + mark + "' & wait"})
    threads.emplace_back(untilStopped, line);
  for (std::thread& thread : threads) thread.join();
  ::_exit(Terminated::status);
}

TEST(LinuxProcesses, TerminationAtAnyMomentLeavesOnlyWhatWasLaunched) {
  for (int moment = 0; moment < 20; ++moment) {
    const std::string mark = fmt::format("mark-{}-{}", ::getpid(), moment);
    const auto named = [&] { return LinuxProcesses().run(commandOf("/usr/bin/pgrep", {"-f", mark})).output; };
    const pid_t agent = ::fork();
    if (agent == 0) waitInAllWays(mark);
    while (named().empty()) std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(moment * 1ms);
    ::kill(agent, SIGTERM);
    int status = 0;
    ASSERT_EQ(::waitpid(agent, &status, 0), agent);
    EXPECT_EQ(WEXITSTATUS(status), Terminated::status);
    const std::string left = named();
    ASSERT_EQ(std::count(left.begin(), left.end(), '\n'), 1) << left;
    ::kill(-std::stoi(left), SIGKILL);
  }
}

}  // namespace
}  // namespace vorlu::test
