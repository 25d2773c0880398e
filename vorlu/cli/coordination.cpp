#include "vorlu/cli/coordination.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "vorlu/cli/coordinator.h"
#include "vorlu/install/network_quality.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/run_type.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

constexpr std::int64_t youngAge = 1800;   // seconds: below it a background run leaves
constexpr std::int64_t stuckAge = 10800;  // seconds: no run takes so long
constexpr Seconds lateStart = 2;          // seconds between the start of a process and of its run
constexpr int lateStartPolls = 2;         // time for a run type to show
constexpr int maxRounds = 50;             // each round is bounded by its polls
constexpr seconds pollGap{5};

}  // namespace

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

Coordinator::Outcome Coordinator::settle(const std::vector<Duplicate>& ahead) {
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

Coordinator::Outcome Coordinator::queueUp(const std::vector<Duplicate>& ahead) {
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

Coordinator::Outcome Coordinator::giveUp(const Duplicate& other) {
  Console& console = vorlu_.platform.console;
  console.print(fmt::format("Another instance of Vorlu is already being run by root under proccess ID: {}", other.pid));
  console.print("Exiting...");
  exitProcess(0);
}

Coordinator::Outcome Coordinator::judgeByAge(const Duplicate& other) {
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
    vorlu_.log(killingText);
    const Outcome outcome = kill(other);
    vorlu_.platform.clock.sleep(seconds(10));
    return outcome;
  }
  return *age < stuckAge ? Outcome::goOnBeside : endStuckAgent(other);
}

Coordinator::Outcome Coordinator::killed(const Duplicate& other, bool ended) {
  if (!ended) {
    vorlu_.log(fmt::format("Error: The Vorlu process {} could not be stopped", other.pid));
    return Outcome::failed;
  }
  const Duplicates left = search();
  // With another one ahead, the run type may be that one's.
  if (left.searched && left.ahead.empty()) clearTracesOfCrash(vorlu_);
  return Outcome::lookAgain;
}

Coordinator::Outcome Coordinator::endStuckAgent(const Duplicate& other) {
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

/// A yield writes no run data.
void Coordinator::leave() {
  vorlu_.log("Exiting...");
  exitProcess(0);
}

Coordination coordinateInstances(Vorlu& vorlu) {
  const bool letGoOn = vorlu.modes.letGoOn && vorlu.modes.standing == Standing::alone;
  return letGoOn ? Coordination::goOn : Coordinator(vorlu).run();
}

}  // namespace vorlu
