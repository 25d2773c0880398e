#include "tests/e2e/simulated_mac.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace vorlu::e2e {

namespace fs = std::filesystem;

namespace {

// The scripts find this build's programs through the environment.
std::vector<std::string> environment() {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (!std::string_view(*variable).starts_with("VORLU_BUILD=")) variables.emplace_back(*variable);
  }
  variables.push_back("VORLU_BUILD=" VORLU_BUILD_DIR);
  return variables;
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> list;
  list.reserve(texts.size() + 1);
  for (const auto& text : texts) list.push_back(const_cast<char*>(text.c_str()));
  list.push_back(nullptr);
  return list;
}

std::string readToEnd(int pipe) {
  std::string text;
  char block[65536];
  for (ssize_t length = 0; (length = ::read(pipe, block, sizeof block)) > 0;) {
    text.append(block, static_cast<std::size_t>(length));
  }
  return text;
}

void mustWork(const std::vector<std::string>& command) {
  const Outcome outcome = runOnMachine(command);
  if (outcome.status != 0) {
    throw std::runtime_error(fmt::format("{}: status {}: {}", fmt::join(command, " "), outcome.status, outcome.output));
  }
}

std::vector<std::string> joined(std::vector<std::string> list, const std::vector<std::string>& more) {
  list.insert(list.end(), more.begin(), more.end());
  return list;
}

}  // namespace

Outcome runOnMachine(const std::vector<std::string>& command) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  const auto variables = environment();
  pid_t child = -1;
  const int error =
      posix_spawnp(&child, command[0].c_str(), &actions, nullptr, pointers(command).data(), pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  Outcome outcome;
  if (error != 0) {
    outcome.output = fmt::format("{} could not be started: error {}", command[0], error);
  } else {
    outcome.output = readToEnd(ends[0]);
    int state = 0;
    waitpid(child, &state, 0);
    outcome.status = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
  }
  close(ends[0]);
  return outcome;
}

std::string builtFile(const std::string& name) {
  return VORLU_BUILD_DIR "/" + name;
}
std::string sourceFile(const std::string& name) {
  return VORLU_SOURCE_DIR "/" + name;
}

std::optional<std::string> SimulatedMac::whyNotHere() {
  const Outcome check = runOnMachine({sourceFile("simulator/mac"), "check"});
  if (check.status == 0) return std::nullopt;
  return check.output;
}

SimulatedMac::SimulatedMac(const std::string& agent, const std::vector<std::string>& options) {
  std::string pattern = fs::temp_directory_path() / "vorlu-mac.XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder at " + pattern);
  temporary_ = pattern;
  folder_ = temporary_ + "/mac";
  mustWork(joined({sourceFile("simulator/mac"), "new", folder_, "--agent", agent}, options));
}

SimulatedMac::~SimulatedMac() {
  const Outcome end = runOnMachine({sourceFile("simulator/mac"), "shutdown", folder_});
  if (end.status != 0) ADD_FAILURE() << end.output;
  std::error_code error;
  fs::remove_all(temporary_, error);
}

void SimulatedMac::boot() {
  mustWork({sourceFile("simulator/mac"), "boot", folder_});
}

void SimulatedMac::shutdown() {
  mustWork({sourceFile("simulator/mac"), "shutdown", folder_});
}

Outcome SimulatedMac::run(const std::vector<std::string>& command, const std::string& user) {
  return runOnMachine(joined({sourceFile("simulator/mac"), "run", folder_, "--user", user}, command));
}

Outcome SimulatedMac::shell(const std::string& line, const std::string& user) {
  return run({"/bin/zsh", "-c", line}, user);
}

std::string SimulatedMac::read(const std::string& macPath) const {
  std::ifstream file(path(macPath), std::ios::binary);
  if (!file) throw std::runtime_error("no file " + path(macPath));
  return {std::istreambuf_iterator<char>(file), {}};
}

void SimulatedMac::write(const std::string& macPath, const std::string& text) const {
  std::ofstream file(path(macPath), std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("can't write " + path(macPath));
}

void SimulatedMac::setHost(const std::string& key, const std::string& json) {
  mustWork({sourceFile("simulator/mac"), "host", folder_, key, json});
}

void SimulatedMac::answerDialogs(const std::vector<std::string>& answers) const {
  const std::string file = "/private/var/db/dialog-answers";
  write(file, fmt::format("{}\n", fmt::join(answers, "\n")));
  fs::permissions(path(file),
                  fs::perms::all & ~(fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec));
}

std::vector<std::string> SimulatedMac::toolCalls() const {
  std::istringstream text(read("/private/var/log/tools.log"));
  std::vector<std::string> calls;
  for (std::string line; std::getline(text, line);) calls.push_back(line);
  return calls;
}

void SimulatedMac::addApplication(const std::string& name, const std::string& version, const std::string& identifier,
                                  const std::vector<std::string>& options, const std::string& folder) const {
  mustWork(joined({sourceFile("simulator/make-app"), name, version, identifier, "--out", path(folder)}, options));
}

void SimulatedMacTest::SetUp() {
  static const std::optional<std::string> reason = SimulatedMac::whyNotHere();
  if (!reason) return;
  if (std::getenv("CI") != nullptr) FAIL() << *reason;
  GTEST_SKIP() << *reason;
}

}  // namespace vorlu::e2e
