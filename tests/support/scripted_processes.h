#pragma once

#include <deque>
#include <functional>
#include <map>
#include <mutex>
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
  std::function<void(const Command&)> effect = {};        ///< runs before the output is handed over
  std::function<std::string(const Command&)> reply = {};  ///< the output instead, made when the command runs
  std::vector<std::string> pieces = {};                   ///< output in these pieces instead, for streamed reading
  bool timedOut = false;                                  ///< the run was killed by signal 9
  bool starts = true;                                     ///< false: the program can't be started
  std::function<bool()> stillRunning = {};                ///< asked of a started program that is waited for later
};

/// Child processes that only follow a script. Every command is noted; one without an answer is a test failure. Answers
/// of one rule are used in the order they were added in, the last for ever. Exact lines come before prefixes, and the
/// longest prefix comes first.
class ScriptedProcesses : public Processes {
 public:
  ProcessResult run(const Command& command) override;
  /// Noted as what `run` notes, which it does at once.
  std::unique_ptr<RunningProcess> start(const Command& command) override;
  /// Noted as "{line} &". A launched process is alive until it is signalled or ended.
  std::optional<pid_t> launch(const Command& command) override;
  /// Noted as "kill -{signal} {pid}". Any signal but 0 ends the process.
  bool signal(pid_t pid, int signal) override;
  bool isAlive(pid_t pid) override;
  pid_t ownPid() override { return 4000; }
  pid_t parentPid() override { return 3999; }
  std::string userName() override { return userName_; }

  void on(const std::string& line, Answer answer);
  void onPrefix(const std::string& prefix, Answer answer);
  /// Really runs `hostProgram` for `program`. Arguments that begin with `agentPath` get `root` in front: a real program
  /// can't see the agent's paths.
  void passThrough(const std::string& program, const std::string& hostProgram, const std::string& agentPath,
                   const std::string& root);

  /// Everything that ran, was launched or signalled since the last question, in order.
  std::vector<std::string> takeCommands();
  /// A process that nobody here launched. It ends like a launched one; a stubborn one only by signal 9.
  void addProcess(pid_t pid, bool stubborn = false);
  void endProcess(pid_t pid);
  void setUserName(std::string name) { userName_ = std::move(name); }

 private:
  using Answers = std::deque<Answer>;
  struct RealProgram {
    std::string hostProgram, agentPath, root;
  };

  std::optional<ProcessResult> runForReal(const Command& command);
  Answer answerFor(const std::string& line);

  std::mutex mutex_;
  std::vector<std::string> commands_;
  std::map<std::string, Answers> exact_;
  std::map<std::string, Answers> prefixes_;
  std::map<std::string, RealProgram> real_;
  std::set<pid_t> alive_;
  std::set<pid_t> stubborn_;
  pid_t nextPid_ = 5001;
  std::string userName_ = "root";
};

}  // namespace vorlu::test
