#include <fmt/format.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>

#include "simulator/tools/process_table.h"
#include "simulator/tools/tool.h"

namespace vorlu::simulator {

namespace {

struct Request {
  int signal = SIGTERM;
  bool dryRun = false;  // -s: show what would be sent
  bool quiet = false;   // -q
  std::optional<std::string> user;
  Arguments names;
};

// "9", "KILL" or "SIGKILL"; 0 when there is no such signal.
int signalNumber(std::string text) {
  if (text.find_first_not_of("0123456789") == std::string::npos) return std::atoi(text.c_str());
  if (text.starts_with("SIG")) text.erase(0, 3);
  for (int number = 1; number < NSIG; ++number) {
    const char* abbreviation = sigabbrev_np(number);
    if (abbreviation != nullptr && text == abbreviation) return number;
  }
  return 0;
}

std::optional<Request> parse(const Arguments& arguments) {
  Request request;
  std::size_t next = 0;
  for (; next < arguments.size() && arguments[next].size() > 1 && arguments[next][0] == '-'; ++next) {
    const std::string option = arguments[next].substr(1);
    if (option == "-") {
      ++next;
      break;
    }
    if (option == "s") {
      request.dryRun = true;
    } else if (option == "q") {
      request.quiet = true;
    } else if (option == "u" && next + 1 < arguments.size()) {
      request.user = arguments[++next];
    } else if (const int number = signalNumber(option); number > 0) {
      request.signal = number;
    } else {
      return std::nullopt;
    }
  }
  request.names.assign(arguments.begin() + static_cast<std::ptrdiff_t>(next), arguments.end());
  if (request.names.empty()) return std::nullopt;
  return request;
}

bool isWanted(const Process& process, const Request& request) {
  if (process.pid == getpid()) return false;
  if (getuid() != 0 && process.user != getuid()) return false;
  if (request.user && userName(process.user) != *request.user) return false;
  return std::find(request.names.begin(), request.names.end(), process.name) != request.names.end();
}

}  // namespace

int runKillall(const Arguments& arguments) {
  const auto request = parse(arguments);
  if (!request) {
    fmt::print(stderr, "usage: killall [-qs] [-SIGNAL] [-u user] procname ...\n");
    return 1;
  }
  bool found = false;
  bool failed = false;
  for (const auto& process : allProcesses()) {
    if (!isWanted(process, *request)) continue;
    found = true;
    if (request->dryRun) {
      fmt::print("kill -{} {}\n", sigabbrev_np(request->signal), process.pid);
    } else if (kill(process.pid, request->signal) != 0 && errno != ESRCH) {
      fmt::print(stderr, "killall: kill -{} {}: {}\n", sigabbrev_np(request->signal), process.pid, strerror(errno));
      failed = true;
    }
  }
  if (!found && !request->quiet) {
    fmt::print(stderr, "No matching processes {}were found\n", getuid() != 0 ? "belonging to you " : "");
  }
  return found && !failed ? 0 : 1;
}

}  // namespace vorlu::simulator
