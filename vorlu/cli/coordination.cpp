#include "vorlu/cli/coordination.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <set>

#include "vorlu/cli/agent_wait.h"
#include "vorlu/cli/kill_duplicate.h"
#include "vorlu/cli/other_install.h"
#include "vorlu/cli/run_type_rules.h"
#include "vorlu/detection/location.h"
#include "vorlu/install/network_quality.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

constexpr std::int64_t youngAge = 1800;   // seconds: below it a background run leaves
constexpr std::int64_t stuckAge = 10800;  // seconds: no run takes so long
constexpr Seconds lateStart = 2;          // seconds between the start of a process and of its run
constexpr int lateStartPolls = 2;         // time for a run type to show
constexpr int maxRounds = 50;             // each round is bounded by its polls
constexpr seconds pollGap{5};
constexpr seconds initialisationGap{10};
constexpr seconds installEndGap{3};
constexpr const char* killing = "Killing duplicate Vorlu process...";

enum class Outcome { lookAgain, goOnAlone, goOnBeside, failed };

bool isInstallType(const std::string& runType) {
  return runType.find("appInstall") != std::string::npos;
}

/// One process's way through the coordination.
class Coordinator {
 public:
  explicit Coordinator(Vorlu& vorlu) : vorlu_(vorlu), requester_(requesterOf(vorlu.modes)) {}

  Coordination run();

 private:
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
  WaitEnd poll(int polls, seconds gap, Look look);
  template <class Stands>
  WaitEnd pollOther(const Duplicate& other, int polls, Stands stands);
  std::string requestedName();
  [[noreturn]] void leave();

  Vorlu& vorlu_;
  Requester requester_;
  bool passedQueue_ = false;
  std::set<pid_t> announced_;
};

Coordination Coordinator::run() {
  for (int round = 0; round < maxRounds; ++round) {
    const Duplicates found = search();
    if (!found.searched) {
      vorlu_.log(fmt::format("Error: Could not search for other instances of Vorlu - {}", found.error));
      return Coordination::failed;
    }
    Outcome outcome = Outcome::goOnAlone;
    if (requester_ == Requester::nobody) {
      if (!found.none()) outcome = Outcome::goOnBeside;
    } else if (const auto ahead = workingAgents(found); !ahead.empty()) {
      noteBeside(vorlu_);
      outcome = settle(ahead);
    } else if (round == 0) {
      vorlu_.platform.files.remove(paths::dialogCommandFile);  // lines for the prompts of runs that have ended
    }
    switch (outcome) {
      case Outcome::lookAgain:
        continue;
      case Outcome::failed:
        return Coordination::failed;
      case Outcome::goOnBeside:
        noteBeside(vorlu_);
        return Coordination::goOn;
      case Outcome::goOnAlone:
        noteAlone(vorlu_);
        vorlu_.modes.letGoOn = true;
        return Coordination::goOn;
    }
  }
  vorlu_.log("Error: Other instances of Vorlu did not come to an end");
  return Coordination::failed;
}

Duplicates Coordinator::search() {
  Duplicates found = findDuplicates(vorlu_);
  for (const auto* list : {&found.ahead, &found.behind}) {
    for (const Duplicate& agent : *list) {
      if (!agent.line.empty() && announced_.insert(agent.pid).second)
        vorlu_.log(fmt::format("Found external duplicate Vorlu process: {}", agent.line));
    }
  }
  return found;
}

/// The agents that this one has to wait for: those before it. A shell that became this run long after it was started
/// gives its age to the run: agents that came between them may work already, if a run type stands.
std::vector<Duplicate> Coordinator::workingAgents(const Duplicates& found) {
  if (!found.ahead.empty()) return found.ahead;
  const auto ownRun = static_cast<std::int64_t>(vorlu_.platform.clock.now() - vorlu_.startedAt);
  if (static_cast<Seconds>(found.ownAge - ownRun) <= lateStart) return {};
  std::vector<Duplicate> earlier;
  std::copy_if(found.behind.begin(), found.behind.end(), std::back_inserter(earlier),
               [ownRun](const Duplicate& agent) { return agent.age >= ownRun; });
  if (earlier.empty()) return {};
  const WaitEnd end = poll(lateStartPolls, pollGap, [&] { return AgentLook{false, readRunType(vorlu_) == "N/A"}; });
  return end == WaitEnd::movedOn ? earlier : std::vector<Duplicate>{};
}

Outcome Coordinator::settle(const std::vector<Duplicate>& ahead) {
  if (ahead.size() > 1 && !passedQueue_) return queueUp(ahead);
  switch (requester_) {
    case Requester::update:
      return giveUp(ahead.front());
    case Requester::background:
      return judgeByAge(ahead.front());
    case Requester::install:
    case Requester::selfService:
      return request(ahead.front());
    case Requester::nobody:
      break;
  }
  return Outcome::goOnBeside;
}

Outcome Coordinator::queueUp(const std::vector<Duplicate>& ahead) {
  for (const Duplicate& agent : ahead)
    if (agent.age >= stuckAge) return endStuckAgent(agent);
  if (isBackground(vorlu_.modes)) {
    vorlu_.log("Other previously queued Vorlu instances are still running. Exiting...");
    exitProcess(0);
  }
  const bool installs = requester_ == Requester::install;
  vorlu_.log(installs ? "Other Vorlu instances are running. The App install request has been queued. Please wait..."
                      : "Other Vorlu instances are running. The update request has been queued. Please wait...");
  Duplicates now;
  const WaitEnd end = poll(requestPolls, pollGap, [&] {
    now = search();
    return AgentLook{!now.searched || now.ahead.empty(), now.ahead.size() > 1};
  });
  passedQueue_ = true;
  if (end == WaitEnd::expired) {
    vorlu_.log("Warning: The request was still queued behind other Vorlu instances after 20 minutes and is given up");
    leave();
  }
  if (end == WaitEnd::gone) return Outcome::lookAgain;
  vorlu_.log(installs ? "Install request is next in the queue. Please wait..."
                      : "Update request is next in the queue. Please wait...");
  vorlu_.platform.clock.sleep(seconds(30));
  return Outcome::lookAgain;
}

Outcome Coordinator::giveUp(const Duplicate& other) {
  Console& console = vorlu_.platform.console;
  console.print(fmt::format("Another instance of Vorlu is already being run by root under proccess ID: {}", other.pid));
  console.print("Exiting...");
  exitProcess(0);
}

Outcome Coordinator::judgeByAge(const Duplicate& other) {
  const auto age = processAge(vorlu_, other.pid);
  if (!age) return Outcome::lookAgain;
  if (*age < youngAge) {
    vorlu_.log(fmt::format("Another instance of Vorlu is in use. Pid: {}", other.pid));
    leave();
  }
  const std::string runType = readRunType(vorlu_);
  if (isInstallType(runType)) {
    vorlu_.log(fmt::format(
        "Error: Duplicate Vorlu process was found for a {} install, but the install is taking longer than expected. "
        "Please verify the internet connection is stable and try again.",
        installSubject(vorlu_, parseInstallType(runType).identifier).name));
    measureNetwork();
    vorlu_.log(killing);
    const Outcome outcome = kill(other);
    vorlu_.platform.clock.sleep(seconds(10));
    return outcome;
  }
  return *age < stuckAge ? Outcome::goOnBeside : endStuckAgent(other);
}

Outcome Coordinator::request(const Duplicate& other) {
  const std::string runType = readRunType(vorlu_);
  if (runType == "N/A") return awaitInitialisation(other);
  const RunTypeRule& rule = ruleFor(runType, requester_);
  if (rule.announcement) vorlu_.log(ruleText(rule.announcement, runType, requester_));
  switch (rule.action) {
    case RuleAction::followInstall:
      return followInstall(other);
    case RuleAction::yield:
      exitProcess(0);
    case RuleAction::cancelOther:
      vorlu_.log(killing);
      return kill(other);
    case RuleAction::wait:
      return awaitRunType(other, rule, runType);
    case RuleAction::goOn:
      break;
  }
  vorlu_.modes.standing = Standing::alone;  // let go on: what the other has written isn't a crash's trace
  return Outcome::goOnAlone;
}

Outcome Coordinator::awaitInitialisation(const Duplicate& other) {
  vorlu_.log(fmt::format("Another instance of Vorlu ({}) is initialising, waiting for initialisation to complete...",
                         other.pid));
  const WaitEnd end = poll(initialisationPolls, initialisationGap, [&] {
    const bool stands = readRunType(vorlu_) == "N/A";
    const Duplicates now = search();
    const bool there =
        std::any_of(now.ahead.begin(), now.ahead.end(), [&](const Duplicate& agent) { return agent.pid == other.pid; });
    return AgentLook{now.searched && !there, stands};
  });
  if (end != WaitEnd::expired) return Outcome::lookAgain;
  vorlu_.log(
      fmt::format("Killing duplicate Vorlu process ({}) because the initialistation appears to have hung", other.pid));
  return kill(other);
}

Outcome Coordinator::awaitRunType(const Duplicate& other, const RunTypeRule& rule, const std::string& runType) {
  const auto stands = [&] { return readRunType(vorlu_) == runType; };
  switch (pollOther(other, requestPolls, stands)) {
    case WaitEnd::gone:
      return Outcome::lookAgain;
    case WaitEnd::movedOn:
      if (rule.movedOn) vorlu_.log(ruleText(rule.movedOn, runType, requester_));
      // A run that has ended its flow isn't initialising another.
      return rule.movedOn || readRunType(vorlu_) == "N/A" ? awaitEnd(other) : Outcome::lookAgain;
    case WaitEnd::expired:
      break;
  }
  vorlu_.log(ruleText(rule.overdue, runType, requester_));
  if (rule.measuresNetwork) measureNetwork();
  if (rule.tellsOfKill) vorlu_.log(killing);
  return kill(other);
}

Outcome Coordinator::awaitEnd(const Duplicate& other) {
  const WaitEnd end = pollOther(other, requestPolls, [] { return true; });
  if (end == WaitEnd::gone) return Outcome::lookAgain;
  vorlu_.log(killing);
  return kill(other);
}

Outcome Coordinator::followInstall(const Duplicate& other) {
  Outcome outcome = Outcome::lookAgain;
  std::string announced;
  while (outcome == Outcome::lookAgain && !hasGone(other)) {
    const std::string runType = readRunType(vorlu_);
    if (!isInstallType(runType)) return runType == "N/A" ? awaitEnd(other) : outcome;
    const OtherInstall install = parseInstallType(runType);
    const InstallSubject app = installSubject(vorlu_, install.identifier);
    if (announced != app.name) {
      vorlu_.log(
          fmt::format("An install for {0} is already running. The requested {1} will be queued until the {0} "
                      "install is complete. Please wait...",
                      app.name, requestedName()));
      announced = app.name;
    }
    switch (install.phase) {
      case InstallPhase::initialising:
        outcome = awaitInstallInit(other, app);
        break;
      case InstallPhase::running:
        return awaitInstallRun(other, app);
      case InstallPhase::complete:
        return awaitInstallComplete(other, app);
    }
  }
  return outcome;
}

Outcome Coordinator::awaitInstallInit(const Duplicate& other, const InstallSubject& app) {
  const auto stands = [&] {
    const std::string runType = readRunType(vorlu_);
    return isInstallType(runType) && parseInstallType(runType).phase == InstallPhase::initialising;
  };
  if (pollOther(other, installPhasePolls, stands) != WaitEnd::expired) return Outcome::lookAgain;
  vorlu_.log(
      fmt::format("Error: Another install was requested for {}, but the install failed to initialise. Killing "
                  "duplicate Vorlu process...",
                  app.name));
  return kill(other);
}

Outcome Coordinator::awaitInstallRun(const Duplicate& other, const InstallSubject& app) {
  const std::string runType = readRunType(vorlu_);
  const WaitEnd end = pollOther(other, requestPolls, [&] { return readRunType(vorlu_) == runType; });
  return end == WaitEnd::gone ? Outcome::lookAgain : waitForAppInstall(other, app);
}

Outcome Coordinator::waitForAppInstall(const Duplicate& other, const InstallSubject& app) {
  vorlu_.log(fmt::format("The {} install has reached the run phase.", app.name));
  vorlu_.log(fmt::format("Checking if {} is installed...", app.name));
  const std::string path = app.entry ? locateApp(vorlu_, *app.entry) : "";
  if (!path.empty()) vorlu_.log(fmt::format("{} was found at path: {}", app.name, path));
  const WaitEnd end = poll(installEndPolls, installEndGap, [&] { return AgentLook{hasGone(other), true}; });
  if (end == WaitEnd::gone) return Outcome::lookAgain;
  vorlu_.log(
      path.empty()
          ? fmt::format("Error: The {} appears to have hung. Cancelling install and killing duplicate process...",
                        app.name)
          : fmt::format("Error: The {} install completed but the Vorlu process appears to be stuck. Killing duplicate "
                        "process...",
                        app.name));
  return killed(other, killHungInstall(vorlu_, other));
}

Outcome Coordinator::awaitInstallComplete(const Duplicate& other, const InstallSubject& app) {
  if (pollOther(other, installPhasePolls, [] { return true; }) == WaitEnd::gone) return Outcome::lookAgain;
  vorlu_.log(
      fmt::format("Killing duplicate Vorlu process ({}) as the {} has install already completed", other.pid, app.name));
  return kill(other);
}

Outcome Coordinator::killed(const Duplicate& other, bool ended) {
  if (ended) return Outcome::lookAgain;
  vorlu_.log(fmt::format("Error: The Vorlu process {} could not be stopped", other.pid));
  return Outcome::failed;
}

Outcome Coordinator::endStuckAgent(const Duplicate& other) {
  vorlu_.log(
      fmt::format("Error: Duplicate Vorlu process (Pid: {}, RunType: {}) has been running for 3 or more hours. "
                  "Killing Duplicate process...",
                  other.pid, readRunType(vorlu_)));
  measureNetwork();
  const Outcome outcome = kill(other);
  vorlu_.platform.clock.sleep(seconds(10));
  return outcome;
}

void Coordinator::measureNetwork() {
  const std::string capacity = measureNetworkQuality(vorlu_);
  if (!capacity.empty()) vorlu_.log(fmt::format("Downlink capacity: {}", capacity));
}

/// A younger process with the same id is another one.
bool Coordinator::hasGone(const Duplicate& other) {
  const auto age = processAge(vorlu_, other.pid);
  return !age || *age < other.age;
}

/// Looks every `gap` until the wait is over.
template <class Look>
WaitEnd Coordinator::poll(int polls, seconds gap, Look look) {
  AgentWait wait(polls);
  do {
    vorlu_.platform.clock.sleep(gap);
  } while (!wait.step(look()));
  return wait.end();
}

template <class Stands>
WaitEnd Coordinator::pollOther(const Duplicate& other, int polls, Stands stands) {
  return poll(polls, pollGap, [&] { return AgentLook{hasGone(other), stands()}; });
}

std::string Coordinator::requestedName() {
  if (requester_ == Requester::selfService) return "update";
  return installSubject(vorlu_, vorlu_.modes.requestedApp).name;
}

/// A yield writes no run data.
void Coordinator::leave() {
  vorlu_.log("Exiting...");
  exitProcess(0);
}

}  // namespace

Coordination coordinateInstances(Vorlu& vorlu) {
  const bool letGoOn = vorlu.modes.letGoOn && vorlu.modes.standing == Standing::alone;
  return letGoOn ? Coordination::goOn : Coordinator(vorlu).run();
}

}  // namespace vorlu
