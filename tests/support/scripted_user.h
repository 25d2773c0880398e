#pragma once

#include <fmt/format.h>

#include <deque>
#include <map>
#include <sstream>
#include <string>
#include <utility>

#include "tests/support/test_platform.h"
#include "vorlu/state/paths.h"

namespace vorlu::test {

/// Someone at a Mac: has applications open, answers prompts from a list, and sees what is noted in `shown`.
class ScriptedUser {
 public:
  explicit ScriptedUser(TestPlatform& mac) : mac_(mac) {
    ScriptedProcesses& processes = mac_.processes;
    processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"});
    processes.onPrefix("/usr/bin/pgrep -x ", {.reply = [this](const Command& command) {
                         const auto id = running.find(command.arguments.back());
                         return id == running.end() ? "" : fmt::format("{}\n", id->second);
                       }});
    processes.onPrefix("zsh: ", {});
    processes.onPrefix("zsh: killall \"", {.effect = [this](const Command& command) {
                         for (const auto& name : namesIn(command, "\"{}\""))
                           if (!unkillable) close(name);
                       }});
    processes.onPrefix("zsh: launchctl asuser", {.effect = [this](const Command& command) {
                         for (const auto& name : namesIn(command, "to \\\"{}\\\""))
                           if (!ignoresQuit) close(name);
                       }});
    processes.onPrefix("zsh: su alice -c 'open ", {.effect = [this](const Command& command) {
                         const bool relaunch = command.arguments[1].find("open -g") != std::string::npos;
                         shown.emplace_back(relaunch ? "relaunch" : "bring forward");
                       }});
    processes.onPrefix("zsh: su alice -c '\"/", {.effect = [this](const Command&) { shown.emplace_back("window"); }});
    processes.onPrefix("zsh: \"" + paths::dialogProgram,
                       {.effect = [this](const Command& command) { completeIn(command.arguments[1]); },
                        .reply = [this](const Command& command) { return answerTo(command.arguments[1]); }});
  }

  void open(const std::string& name) {
    running[name] = std::to_string(++lastPid);
    mac_.applications.running.insert("com.example." + name);
  }
  void close(const std::string& name) {
    closedAt = mac_.clock.now();
    running.erase(name);
    mac_.applications.running.erase("com.example." + name);
  }
  /// The user's next answers: exit codes, separated by blanks.
  void willAnswer(const std::string& codes) {
    std::istringstream words(codes);
    for (std::string code; words >> code;) answers.push_back(code);
  }
  std::string seen() {
    std::string text;
    for (const std::string& item : std::exchange(shown, {})) text += (text.empty() ? "" : ", ") + item;
    return text;
  }

  Lines shown;
  std::deque<std::string> answers;
  std::map<std::string, std::string> running;  ///< process id by name
  bool ignoresQuit = false;
  bool unkillable = false;
  Seconds closedAt = 0;    ///< when an app was closed last
  Seconds answerTime = 0;  ///< that the user takes for each answer

 private:
  std::vector<std::string> namesIn(const Command& command, const char* quoted) {
    std::vector<std::string> names;
    for (const auto& [name, pid] : running)
      if (command.arguments[1].find(fmt::format(fmt::runtime(quoted), name)) != std::string::npos)
        names.push_back(name);
    return names;
  }
  /// The closing prompt leaves its answer in a file.
  void completeIn(const std::string& line) {
    if (line.find(paths::completeResult) == std::string::npos) return;
    shown.emplace_back("complete");
    mac_.write(paths::completeResult, "0\n");
  }
  std::string answerTo(const std::string& line) {
    const auto has = [&](const char* text) { return line.find(text) != std::string::npos; };
    const std::string kind = has("--button2text")           ? "initial"
                             : has("Error Installing")      ? "failure"
                             : has("You're all up to date") ? "up to date"
                                                            : "grace";
    const bool isAsked = kind == "initial" || kind == "grace";
    const std::string answer = !isAsked || answers.empty() ? "0" : answers.front();
    if (isAsked && !answers.empty()) answers.pop_front();
    mac_.clock.advance(answerTime);
    shown.push_back(isAsked ? kind + " " + answer : kind);
    return answer + "\n";
  }

  int lastPid = 700;
  TestPlatform& mac_;
};

}  // namespace vorlu::test
