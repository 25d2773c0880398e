#include "tests/support/scripted_processes.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <utility>

#include "vorlu/platform/linux/linux_processes.h"

namespace vorlu::test {
namespace {

std::string word(const std::string& argument) {
  const bool plain = !argument.empty() && argument.find_first_of(" \t\n") == std::string::npos;
  return plain ? argument : "'" + argument + "'";
}

ProcessResult resultOf(const Answer& answer, const Command& command) {
  ProcessResult result;
  result.started = answer.starts;
  if (!answer.starts) {
    result.error = command.program + ": No such file or directory";
    return result;
  }
  result.timedOut = answer.timedOut;
  result.signal = answer.timedOut ? SIGKILL : 0;
  result.status = answer.timedOut ? -1 : answer.status;
  const auto pieces = answer.pieces.empty() && !answer.output.empty() ? std::vector{answer.output} : answer.pieces;
  for (const std::string& piece : pieces) {
    if (command.onOutput)
      command.onOutput(piece);
    else
      result.output += piece;
  }
  result.output.resize(std::min(result.output.size(), command.outputCap));
  return result;
}

}  // namespace

std::string commandLine(const Command& command) {
  if (command.program == "/bin/zsh" && command.arguments.size() == 2 && command.arguments[0] == "-c")
    return "zsh: " + command.arguments[1];
  std::string line = command.program;
  for (const std::string& argument : command.arguments) line += " " + word(argument);
  return line;
}

Command commandOf(std::string program, std::vector<std::string> arguments) {
  Command command;
  command.program = std::move(program);
  command.arguments = std::move(arguments);
  return command;
}

void ScriptedProcesses::on(const std::string& line, Answer answer) {
  const std::scoped_lock lock(mutex_);
  exact_[line].push_back(std::move(answer));
}

void ScriptedProcesses::onPrefix(const std::string& prefix, Answer answer) {
  const std::scoped_lock lock(mutex_);
  prefixes_[prefix].push_back(std::move(answer));
}

void ScriptedProcesses::passThrough(const std::string& program, const std::string& hostProgram,
                                    const std::string& agentPath, const std::string& root) {
  real_[program] = {hostProgram, agentPath, root};
}

Answer ScriptedProcesses::answerFor(const std::string& line) {
  Answers* answers = nullptr;
  if (const auto exact = exact_.find(line); exact != exact_.end()) answers = &exact->second;
  // Of the prefixes of one line the longer ones come later in the map.
  for (auto rule = prefixes_.rbegin(); rule != prefixes_.rend() && !answers; ++rule)
    if (line.starts_with(rule->first)) answers = &rule->second;
  if (!answers) {
    ADD_FAILURE() << "Unexpected command: " << line;
    return {.output = "", .status = 127};
  }
  Answer answer = answers->front();
  if (answers->size() > 1) answers->pop_front();
  return answer;
}

/// Nothing when the command is a scripted one.
std::optional<ProcessResult> ScriptedProcesses::runForReal(const Command& command) {
  std::unique_lock lock(mutex_);
  const auto real = real_.find(command.program);
  if (real == real_.end()) return std::nullopt;
  lock.unlock();
  Command hostCommand = command;
  hostCommand.program = real->second.hostProgram;
  for (std::string& argument : hostCommand.arguments)
    if (argument.starts_with(real->second.agentPath)) argument.insert(0, real->second.root);
  return LinuxProcesses().run(hostCommand);
}

ProcessResult ScriptedProcesses::run(const Command& command) {
  return start(command)->wait();
}

std::unique_ptr<RunningProcess> ScriptedProcesses::start(const Command& command) {
  struct Scripted : RunningProcess {
    ProcessResult result;
    std::function<bool()> stillRunning;
    bool isRunning() override { return stillRunning && stillRunning(); }
    ProcessResult wait() override { return result; }
  };
  auto process = std::make_unique<Scripted>();
  const std::string line = commandLine(command);
  std::unique_lock lock(mutex_);
  commands_.push_back(line);
  lock.unlock();
  if (auto result = runForReal(command)) {
    process->result = std::move(*result);
    return process;
  }
  lock.lock();
  Answer answer = answerFor(line);
  lock.unlock();
  if (answer.effect) answer.effect(command);
  if (answer.reply) answer.output = answer.reply(command);
  process->result = resultOf(answer, command);
  process->stillRunning = answer.stillRunning;
  return process;
}

std::optional<pid_t> ScriptedProcesses::launch(const Command& command) {
  const std::string line = commandLine(command) + " &";
  std::unique_lock lock(mutex_);
  commands_.push_back(line);
  const Answer answer = answerFor(line);
  if (!answer.starts) return std::nullopt;
  const pid_t pid = nextPid_++;
  alive_.insert(pid);
  lock.unlock();
  if (answer.effect) answer.effect(command);
  return pid;
}

bool ScriptedProcesses::signal(pid_t pid, int signal) {
  const std::scoped_lock lock(mutex_);
  commands_.push_back(fmt::format("kill -{} {}", signal, pid));
  const bool ends = signal == 9 || (signal != 0 && !stubborn_.contains(pid));
  return ends ? alive_.erase(pid) > 0 : alive_.contains(pid);
}

void ScriptedProcesses::addProcess(pid_t pid, bool stubborn) {
  const std::scoped_lock lock(mutex_);
  alive_.insert(pid);
  if (stubborn) stubborn_.insert(pid);
}

void ScriptedProcesses::endProcess(pid_t pid) {
  const std::scoped_lock lock(mutex_);
  alive_.erase(pid);
}

bool ScriptedProcesses::isAlive(pid_t pid) {
  const std::scoped_lock lock(mutex_);
  return alive_.contains(pid);
}

std::vector<std::string> ScriptedProcesses::takeCommands() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(commands_, {});
}

}  // namespace vorlu::test
