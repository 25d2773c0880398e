#pragma once

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "vorlu/platform/processes.h"

namespace vorlu::test {

/// A command as one line. A shell's line stands alone behind "zsh: "; otherwise program and arguments are joined by
/// blanks, and an argument that is empty or holds a blank stands in single quotes.
std::string commandLine(const Command& command);

/// A command of this program with these arguments.
Command commandOf(std::string program, std::vector<std::string> arguments = {});

/// What a scripted command does.
struct Answer {
  std::string output = {};
  int status = 0;
  std::function<void(const Command&)> effect = {};  ///< runs before the output is handed over
  std::vector<std::string> pieces = {};             ///< output in these pieces instead, for streamed reading
  bool timedOut = false;                            ///< the run was killed by signal 9
  bool starts = true;                               ///< false: the program can't be started
};

/// Child processes that only follow a script. Every command is noted; one without an answer is a test failure. Answers
/// of one rule are used in the order they were added in, the last for ever. Exact lines come before prefixes, prefixes
/// before patterns; the newest prefix or pattern comes first.
class ScriptedProcesses : public Processes {
 public:
  ProcessResult run(const Command& command) override;
  /// Noted as "{line} &". A launched process is alive until it is signalled or ended.
  std::optional<pid_t> launch(const Command& command) override;
  /// Noted as "kill -{signal} {pid}". Ends the process unless it ignores signals; 9 always does.
  bool signal(pid_t pid, int signal) override;
  bool isAlive(pid_t pid) override;
  pid_t ownPid() override { return ownPid_; }
  pid_t parentPid() override { return parentPid_; }
  std::string userName() override { return userName_; }

  void on(const std::string& line, Answer answer);
  void onPrefix(const std::string& prefix, Answer answer);
  void onMatch(const std::string& pattern, Answer answer);
  /// For all that has no rule; without it such a command fails the test.
  void otherwise(Answer answer);
  /// Really runs `program`, as `hostProgram` if that isn't empty. Arguments that begin with one of `agentPaths` get
  /// `root` in front: a real program can't see the agent's paths.
  void passThrough(const std::string& program, const std::string& root, std::vector<std::string> agentPaths,
                   const std::string& hostProgram = "");

  /// Everything that ran, was launched or signalled, in order.
  std::vector<std::string> commands();
  void forgetCommands();
  void setAlive(pid_t pid, bool alive);
  void setIgnoresSignals(pid_t pid);
  void setUserName(std::string name) { userName_ = std::move(name); }
  void setOwnPid(pid_t own, pid_t parent) { ownPid_ = own, parentPid_ = parent; }

 private:
  using Answers = std::deque<Answer>;
  struct Rule {
    std::function<bool(const std::string&)> matches;
    std::string text;
    Answers answers;
  };
  struct RealProgram {
    std::string root;
    std::vector<std::string> agentPaths;
    std::string hostProgram;
  };

  void addRule(std::vector<Rule>& rules, const std::string& text, std::function<bool(const std::string&)> matches,
               Answer answer);
  Answers* answersFor(const std::string& line);
  Answer answerFor(const std::string& line);
  static Command asReal(Command command, const RealProgram& real);

  std::mutex mutex_;
  std::vector<std::string> commands_;
  std::map<std::string, Answers> exact_;
  std::vector<Rule> prefixes_;
  std::vector<Rule> patterns_;
  Answers otherwise_;
  std::map<std::string, RealProgram> real_;
  std::set<pid_t> alive_;
  std::set<pid_t> stubborn_;
  pid_t nextPid_ = 5001;
  pid_t ownPid_ = 4000;
  pid_t parentPid_ = 3999;
  std::string userName_ = "root";
};

}  // namespace vorlu::test
