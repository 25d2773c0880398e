// Runs two commands in turn and prints on one line the median of what each used, processor and wall time in
// milliseconds and peak memory in kilobytes, then the medians of what A used for one of B in each pair of runs:
// processor and wall time. The processor time is the command's own with all its threads, or with --family that of the
// programs it started as well. Before each run comes, unmeasured, the shell line that --before gives.
//
//   bench-measure [--family] [--before LINE] RUNS COMMAND_A … -- COMMAND_B …

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

namespace {

struct Run {
  double cpu = 0;   // milliseconds
  double wall = 0;  // milliseconds
  long peak = 0;    // kilobytes
};

double now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

/// Of all threads that a process had. It has ended but isn't reaped.
double ownCpu(pid_t pid) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0) {
    std::fprintf(stderr, "the processor time of %d can't be read\n", pid);
    std::exit(1);
  }
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

double milliseconds(const timeval& time) {
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

struct Options {
  bool family = false;
  const char* before = nullptr;
};

Run measure(const std::vector<char*>& command, const Options& options) {
  if (options.before != nullptr && std::system(options.before) != 0) {
    std::fprintf(stderr, "%s failed\n", options.before);
    std::exit(1);
  }
  Run run;
  const double start = now();
  const pid_t pid = fork();
  if (pid == 0) {
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    execv(command[0], command.data());
    std::perror(command[0]);
    _exit(127);
  }
  siginfo_t info{};
  waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT);
  run.wall = now() - start;
  run.cpu = ownCpu(pid);
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  run.peak = usage.ru_maxrss;
  if (options.family) run.cpu = milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "%s ended with status %d\n", command[0], status);
    std::exit(1);
  }
  return run;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void printMedians(const std::vector<Run>& runs) {
  std::vector<double> cpu;
  std::vector<double> wall;
  std::vector<double> peak;
  for (const Run& run : runs) {
    cpu.push_back(run.cpu);
    wall.push_back(run.wall);
    peak.push_back(static_cast<double>(run.peak));
  }
  std::printf("%.2f %.2f %.0f ", median(cpu), median(wall), median(peak));
}

void printRatios(const std::vector<Run>& first, const std::vector<Run>& second) {
  std::vector<double> cpu;
  std::vector<double> wall;
  for (std::size_t pair = 0; pair < first.size(); ++pair) {
    cpu.push_back(first[pair].cpu / second[pair].cpu);
    wall.push_back(first[pair].wall / second[pair].wall);
  }
  std::printf("%.3f %.3f\n", median(cpu), median(wall));
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  int first = 1;
  for (; first < argc && argv[first][0] == '-'; ++first) {
    if (std::strcmp(argv[first], "--family") == 0) options.family = true;
    if (std::strcmp(argv[first], "--before") == 0 && first + 1 < argc) options.before = argv[++first];
  }
  if (argc < first + 2) {
    std::fputs("usage: bench-measure [--family] [--before LINE] RUNS COMMAND_A … -- COMMAND_B …\n", stderr);
    return 2;
  }
  std::vector<std::vector<char*>> commands(1);
  for (int index = first + 1; index < argc; ++index) {
    if (std::strcmp(argv[index], "--") == 0) {
      commands.back().push_back(nullptr);
      commands.emplace_back();
    } else {
      commands.back().push_back(argv[index]);
    }
  }
  commands.back().push_back(nullptr);
  const int runs = std::atoi(argv[first]);
  if (runs < 1 || commands.size() != 2) {
    std::fputs("bench-measure: wants a number of runs and two commands\n", stderr);
    return 2;
  }
  std::vector<std::vector<Run>> results(commands.size());
  for (int run = -1; run < runs; ++run) {  // the first of each isn't counted
    for (std::size_t index = 0; index < commands.size(); ++index) {
      const Run result = measure(commands[index], options);
      if (run >= 0) results[index].push_back(result);
    }
  }
  for (const auto& result : results) printMedians(result);
  printRatios(results[0], results[1]);
  return 0;
}
