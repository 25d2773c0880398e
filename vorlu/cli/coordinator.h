#pragma once

#include <chrono>
#include <set>
#include <string>
#include <vector>

#include "vorlu/cli/agent_wait.h"
#include "vorlu/cli/coordination.h"
#include "vorlu/cli/kill_duplicate.h"
#include "vorlu/cli/other_install.h"
#include "vorlu/cli/run_type_rules.h"
#include "vorlu/vorlu.h"

namespace vorlu {

inline constexpr const char* killingText = "Killing duplicate Vorlu process...";

/// One process's way through the coordination.
class Coordinator {
 public:
  explicit Coordinator(Vorlu& vorlu) : vorlu_(vorlu), requester_(requesterOf(vorlu.modes)) {}

  Coordination run();

 private:
  enum class Outcome { lookAgain, goOnAlone, goOnBeside, failed };

  Duplicates search();
  std::vector<Duplicate> workingAgents(const Duplicates& found);
  Outcome settle(const std::vector<Duplicate>& ahead);

  Outcome queueUp(const std::vector<Duplicate>& ahead);
  Outcome giveUp(const Duplicate& other);
  Outcome judgeByAge(const Duplicate& other);
  Outcome request(const Duplicate& other);
  Outcome awaitInitialisation(const Duplicate& other);
  Outcome awaitRunType(const Duplicate& other, const RunTypeRule& rule, const std::string& runType);
  Outcome awaitEnd(const Duplicate& other);
  Outcome followInstall(const Duplicate& other);
  Outcome awaitInstallInit(const Duplicate& other, const InstallSubject& app);
  Outcome awaitInstallRun(const Duplicate& other, const InstallSubject& app);
  Outcome waitForAppInstall(const Duplicate& other, const InstallSubject& app);
  Outcome awaitInstallComplete(const Duplicate& other, const InstallSubject& app);

  Outcome kill(const Duplicate& other) { return killed(other, killDuplicate(vorlu_, other)); }
  Outcome killed(const Duplicate& other, bool ended);
  Outcome endStuckAgent(const Duplicate& other);
  void measureNetwork();
  bool hasGone(const Duplicate& other);
  template <class Look>
  WaitEnd poll(int polls, std::chrono::seconds gap, Look look);
  /// The same about the other agent, every five seconds.
  template <class Stands>
  WaitEnd pollOther(const Duplicate& other, int polls, Stands stands);
  std::string requestedName();
  [[noreturn]] void leave();

  Vorlu& vorlu_;
  Requester requester_;
  bool passedQueue_ = false;
  std::set<pid_t> announced_;
};

/// Looks every `gap` until the wait is over.
template <class Look>
WaitEnd Coordinator::poll(int polls, std::chrono::seconds gap, Look look) {
  AgentWait wait(polls);
  do {
    vorlu_.platform.clock.sleep(gap);
  } while (!wait.step(look()));
  return wait.end();
}

template <class Stands>
WaitEnd Coordinator::pollOther(const Duplicate& other, int polls, Stands stands) {
  return poll(polls, std::chrono::seconds(5), [&] { return AgentLook{hasGone(other), stands()}; });
}

}  // namespace vorlu
