#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>

#include "simulator/host/forward_request.h"
#include "simulator/tools/application.h"
#include "simulator/tools/tool.h"

namespace vorlu::simulator {

namespace {

struct Request {
  bool newInstance = false;   // -n
  bool inBackground = false;  // -g
  std::string application;    // -a
  Arguments items;
  Arguments forTheProgram;  // --args
};

std::optional<Request> parse(const Arguments& arguments) {
  Request request;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "--args") {
      request.forTheProgram.assign(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1, arguments.end());
      break;
    }
    if (argument == "-a" && i + 1 < arguments.size()) {
      request.application = arguments[++i];
    } else if (argument == "-n") {
      request.newInstance = true;
    } else if (argument == "-g" || argument == "-j" || argument == "-F") {
      request.inBackground = request.inBackground || argument == "-g";
    } else if (argument.starts_with("-")) {
      return std::nullopt;
    } else {
      request.items.push_back(argument);
    }
  }
  if (request.application.empty() && request.items.empty()) return std::nullopt;
  return request;
}

[[noreturn]] void becomeProgram(const std::string& program, const Arguments& arguments, int failurePipe) {
  setsid();
  if (fork() != 0) _exit(0);
  const int null = open("/dev/null", O_RDWR);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(null, standard);
  close_range(STDERR_FILENO + 1, static_cast<unsigned>(failurePipe) - 1, 0);
  close_range(static_cast<unsigned>(failurePipe) + 1, ~0U, 0);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (chdir("/") != 0) _exit(1);
  std::vector<char*> vector{const_cast<char*>(program.c_str())};
  for (const auto& argument : arguments) vector.push_back(const_cast<char*>(argument.c_str()));
  vector.push_back(nullptr);
  execv(program.c_str(), vector.data());
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(failurePipe, &error, sizeof error);
  _exit(1);
}

// Starts the program in a session of its own, away from this one's pipes; 0, or the error number. It runs when this
// returns, so that the next look at the processes finds it.
int startDetached(const std::string& program, const Arguments& arguments) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return errno;
  const pid_t child = fork();
  if (child == 0) becomeProgram(program, arguments, ends[1]);
  close(ends[1]);
  waitpid(child, nullptr, 0);
  int error = 0;
  if (read(ends[0], &error, sizeof error) != sizeof error) error = 0;
  close(ends[0]);
  return error;
}

int openApplication(const Application& application, const Request& request) {
  const auto running = processesOf(application);
  if (!request.newInstance && !running.empty()) {
    if (!request.inBackground)
      for (const auto& process : running) askForward(process.pid);
    return 0;
  }
  const int error = startDetached(application.program, request.forTheProgram);
  if (error == 0) return 0;
  fmt::print(stderr, "The application {} could not be launched because its executable could not be started: {}\n",
             application.path, strerror(error));
  return 1;
}

// A bundle, or a plain program, which a Mac would start in a terminal.
int openItem(const std::string& item, const Request& request) {
  std::error_code failure;
  const std::string path = std::filesystem::absolute(item, failure);
  struct stat info = {};
  if (stat(path.c_str(), &info) != 0) {
    fmt::print(stderr, "The file {} does not exist.\n", path);
    return 1;
  }
  if (const auto application = applicationAt(path)) return openApplication(*application, request);
  if (S_ISDIR(info.st_mode)) return 0;
  if (access(path.c_str(), X_OK) == 0) return startDetached(path, request.forTheProgram) == 0 ? 0 : 1;
  fmt::print(stderr, "No application knows how to open {}.\n", path);
  return 1;
}

}  // namespace

int runOpen(const Arguments& arguments) {
  const auto request = parse(arguments);
  if (!request) {
    fmt::print(stderr, "Usage: open [-g] [-n] [-a application] [filenames] [--args arguments]\n");
    return 1;
  }
  if (request->application.empty()) {
    int status = 0;
    for (const auto& item : request->items) status |= openItem(item, *request);
    return status;
  }
  const bool isPath = request->application.find('/') != std::string::npos;
  const std::string bundle = bundleOf(request->application);  // a program stands for the bundle that it is in
  const auto application =
      isPath ? applicationAt(bundle.empty() ? request->application : bundle) : applicationNamed(request->application);
  if (!application) {
    fmt::print(stderr, "Unable to find application named '{}'\n", request->application);
    return 1;
  }
  return openApplication(*application, *request);
}

}  // namespace vorlu::simulator
