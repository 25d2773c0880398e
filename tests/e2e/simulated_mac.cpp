#include "tests/e2e/simulated_mac.h"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "tests/support/temporary_folder.h"
#include "vorlu/platform/linux/linux_processes.h"

namespace vorlu::e2e {

namespace fs = std::filesystem;

namespace {

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
  Command run;
  run.program = "/usr/bin/env";
  // The scripts find this build's programs through the environment.
  run.arguments = joined({"VORLU_BUILD=" VORLU_BUILD_DIR}, command);
  const ProcessResult result = LinuxProcesses().run(run);
  if (!result.started) return {-1, result.error};
  return {result.signal == 0 ? result.status : 128 + result.signal, result.output};
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

SimulatedMac::SimulatedMac(const std::string& agent) {
  mustWork({sourceFile("simulator/mac"), "new", path(""), "--agent", agent});
}

SimulatedMac::~SimulatedMac() {
  const Outcome end = runOnMachine({sourceFile("simulator/mac"), "shutdown", path("")});
  if (end.status != 0) ADD_FAILURE() << end.output;
}

void SimulatedMac::boot() {
  mustWork({sourceFile("simulator/mac"), "boot", path("")});
}

Outcome SimulatedMac::run(const std::vector<std::string>& command, const std::string& user) {
  return runOnMachine(joined({sourceFile("simulator/mac"), "run", path(""), "--user", user}, command));
}

Outcome SimulatedMac::shell(const std::string& line, const std::string& user) {
  return run({"/bin/zsh", "-c", line}, user);
}

std::string SimulatedMac::read(const std::string& macPath) const {
  return test::readFile(path(macPath));
}

void SimulatedMac::write(const std::string& macPath, const std::string& text) const {
  test::writeFile(path(macPath), text);
}

void SimulatedMac::setHost(const std::string& key, const std::string& json) {
  mustWork({sourceFile("simulator/mac"), "host", path(""), key, json});
}

std::vector<std::string> SimulatedMac::toolCalls() const {
  std::istringstream text(read("/private/var/log/tools.log"));
  std::vector<std::string> calls;
  for (std::string line; std::getline(text, line);) calls.push_back(line);
  return calls;
}

void SimulatedMac::addApplication(const std::string& name, const std::string& version,
                                  const std::string& identifier) const {
  mustWork({sourceFile("simulator/make-app"), name, version, identifier, "--out", path("/Applications")});
}

void SimulatedMacTest::SetUp() {
  static const std::optional<std::string> reason = SimulatedMac::whyNotHere();
  if (!reason) return;
  if (std::getenv("CI") != nullptr) FAIL() << *reason;
  GTEST_SKIP() << *reason;
}

}  // namespace vorlu::e2e
