#include "tests/support/scripted_processes.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>

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
  addRule(
      prefixes_, prefix, [prefix](const std::string& line) { return line.starts_with(prefix); }, std::move(answer));
}

void ScriptedProcesses::onMatch(const std::string& pattern, Answer answer) {
  addRule(
      patterns_, pattern,
      [expression = std::regex(pattern)](const std::string& line) { return std::regex_search(line, expression); },
      std::move(answer));
}

void ScriptedProcesses::otherwise(Answer answer) {
  const std::scoped_lock lock(mutex_);
  otherwise_ = {std::move(answer)};
}

void ScriptedProcesses::passThrough(const std::string& program, const std::string& root,
                                    std::vector<std::string> agentPaths, const std::string& hostProgram) {
  const std::scoped_lock lock(mutex_);
  real_[program] = {root, std::move(agentPaths), hostProgram.empty() ? program : hostProgram};
}

void ScriptedProcesses::addRule(std::vector<Rule>& rules, const std::string& text,
                                std::function<bool(const std::string&)> matches, Answer answer) {
  const std::scoped_lock lock(mutex_);
  auto rule = std::find_if(rules.begin(), rules.end(), [&](const Rule& known) { return known.text == text; });
  if (rule == rules.end()) rule = rules.insert(rules.begin(), Rule{std::move(matches), text, {}});
  rule->answers.push_back(std::move(answer));
}

ScriptedProcesses::Answers* ScriptedProcesses::answersFor(const std::string& line) {
  const auto exact = exact_.find(line);
  if (exact != exact_.end()) return &exact->second;
  for (auto* rules : {&prefixes_, &patterns_})
    for (Rule& rule : *rules)
      if (rule.matches(line)) return &rule.answers;
  return otherwise_.empty() ? nullptr : &otherwise_;
}

Answer ScriptedProcesses::answerFor(const std::string& line) {
  Answers* answers = answersFor(line);
  if (!answers) {
    ADD_FAILURE() << "Unexpected command: " << line;
    Answer none;
    none.status = 127;
    return none;
  }
  Answer answer = answers->front();
  if (answers->size() > 1) answers->pop_front();
  return answer;
}

Command ScriptedProcesses::asReal(Command command, const RealProgram& real) {
  command.program = real.hostProgram;
  for (std::string& argument : command.arguments) {
    const bool agentPath = std::any_of(real.agentPaths.begin(), real.agentPaths.end(),
                                       [&](const std::string& path) { return argument.starts_with(path); });
    if (agentPath) argument.insert(0, real.root);
  }
  return command;
}

ProcessResult ScriptedProcesses::run(const Command& command) {
  const std::string line = commandLine(command);
  std::unique_lock lock(mutex_);
  commands_.push_back(line);
  const auto real = real_.find(command.program);
  if (real != real_.end()) {
    const Command hostCommand = asReal(command, real->second);
    lock.unlock();
    return LinuxProcesses().run(hostCommand);
  }
  const Answer answer = answerFor(line);
  lock.unlock();
  if (answer.effect) answer.effect(command);
  return resultOf(answer, command);
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
  if (!alive_.contains(pid)) return false;
  if (signal == SIGKILL || (signal != 0 && !stubborn_.contains(pid))) alive_.erase(pid);
  return true;
}

bool ScriptedProcesses::isAlive(pid_t pid) {
  const std::scoped_lock lock(mutex_);
  return alive_.contains(pid);
}

std::vector<std::string> ScriptedProcesses::commands() {
  const std::scoped_lock lock(mutex_);
  return commands_;
}

void ScriptedProcesses::forgetCommands() {
  const std::scoped_lock lock(mutex_);
  commands_.clear();
}

void ScriptedProcesses::setAlive(pid_t pid, bool alive) {
  const std::scoped_lock lock(mutex_);
  if (alive)
    alive_.insert(pid);
  else
    alive_.erase(pid);
}

void ScriptedProcesses::setIgnoresSignals(pid_t pid) {
  const std::scoped_lock lock(mutex_);
  stubborn_.insert(pid);
}

}  // namespace vorlu::test
