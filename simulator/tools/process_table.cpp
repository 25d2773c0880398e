#include "simulator/tools/process_table.h"

#include <fmt/format.h>
#include <pwd.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace vorlu::simulator {

namespace {

constexpr std::size_t kernelNameLength = 15;  // Linux cuts a process name here

std::string readFile(const std::string& path) {
  // A process may end while its files are read: that is an error of the stream, which an iterator would throw.
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::string baseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::vector<std::string> splitArguments(const std::string& text) {
  std::vector<std::string> arguments;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\0', start), text.size());
    arguments.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return arguments;
}

std::string executable(const std::string& folder) {
  std::error_code error;
  std::string path = std::filesystem::read_symlink(folder + "/exe", error).string();
  // A program that was replaced while it ran keeps its old name.
  constexpr std::string_view deleted = " (deleted)";
  if (path.ends_with(deleted)) path.resize(path.size() - deleted.size());
  return path;
}

// The kernel's name is that of the file that was started, cut: a script's own name, not its shell's. The argument of
// that name is the uncut one.
std::string startedProgram(const std::string& kernelName, const std::vector<std::string>& arguments,
                           const std::string& executablePath) {
  constexpr std::size_t lookedAt = 4;  // shell, its option, script
  for (std::size_t i = 0; i < std::min(arguments.size(), lookedAt); ++i) {
    if (baseName(arguments[i]).substr(0, kernelNameLength) != kernelName) continue;
    const bool isTheProgram = i == 0 && baseName(executablePath) == baseName(arguments[0]);
    return isTheProgram || arguments[i].empty() ? executablePath : arguments[i];
  }
  return executablePath.empty() ? kernelName : executablePath;
}

double secondsSinceBoot() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// Fields of /proc/PID/stat from the state on; the name before may hold blanks and brackets.
bool readStat(const std::string& folder, double now, Process& process, std::string& kernelName) {
  const std::string text = readFile(folder + "/stat");
  const std::size_t open = text.find('(');
  const std::size_t close = text.rfind(')');
  if (open == std::string::npos || close == std::string::npos) return false;
  kernelName = text.substr(open + 1, close - open - 1);
  std::istringstream fields(text.substr(close + 1));
  const std::vector<std::string> field{std::istream_iterator<std::string>(fields), {}};
  if (field.size() < 22) return false;
  const auto number = [&](std::size_t index) { return std::atof(field[index].c_str()); };
  const auto ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
  process.state = field[0][0];
  process.parent = static_cast<pid_t>(number(1));
  process.group = static_cast<pid_t>(number(2));
  process.cpuTime = (number(11) + number(12)) / ticks;
  process.age = std::max(0.0, now - number(19) / ticks);
  process.residentKilobytes = static_cast<long>(number(21)) * (sysconf(_SC_PAGESIZE) / 1024);
  return true;
}

std::optional<Process> processAt(pid_t pid, double now) {
  const std::string folder = fmt::format("/proc/{}", pid);
  struct stat owner = {};
  Process process;
  std::string kernelName;
  if (stat(folder.c_str(), &owner) != 0 || !readStat(folder, now, process, kernelName)) return std::nullopt;
  if (process.state == 'Z' || process.state == 'X') return std::nullopt;
  process.pid = pid;
  process.user = owner.st_uid;
  process.arguments = splitArguments(readFile(folder + "/cmdline"));
  process.program = startedProgram(kernelName, process.arguments, executable(folder));
  process.name = baseName(process.program);
  return process;
}

}  // namespace

std::optional<Process> findProcess(pid_t pid) {
  return processAt(pid, secondsSinceBoot());
}

std::vector<Process> allProcesses() {
  std::vector<pid_t> ids;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos) ids.push_back(std::atoi(name.c_str()));
  }
  std::sort(ids.begin(), ids.end());
  std::vector<Process> processes;
  const double now = secondsSinceBoot();
  for (const pid_t id : ids) {
    if (auto process = processAt(id, now)) processes.push_back(std::move(*process));
  }
  return processes;
}

std::string commandLine(const Process& process) {
  if (process.arguments.empty()) return fmt::format("({})", process.name);
  return fmt::format("{}", fmt::join(process.arguments, " "));
}

std::string userName(uid_t user) {
  const passwd* entry = getpwuid(user);
  return entry != nullptr ? entry->pw_name : std::to_string(user);
}

}  // namespace vorlu::simulator
