#include <fmt/format.h>

#include <algorithm>

#include "vorlu/cli/coordinator.h"
#include "vorlu/detection/location.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/run_type.h"

// What an install or a Self Service run does about the one agent before it.

namespace vorlu {
namespace {

using std::chrono::seconds;

constexpr seconds initialisationGap{10};
constexpr seconds installEndGap{3};

}  // namespace

Coordinator::Outcome Coordinator::request(const Duplicate& other) {
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
      vorlu_.log(killingText);
      return kill(other);
    case RuleAction::wait:
      return awaitRunType(other, rule, runType);
    case RuleAction::goOn:
      break;
  }
  vorlu_.modes.standing = Standing::alone;  // let go on: what the other has written isn't a crash's trace
  return Outcome::goOnAlone;
}

Coordinator::Outcome Coordinator::awaitInitialisation(const Duplicate& other) {
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

Coordinator::Outcome Coordinator::awaitRunType(const Duplicate& other, const RunTypeRule& rule,
                                               const std::string& runType) {
  // The same row stands for several run types that a run passes through.
  const auto stands = [&] { return &ruleFor(readRunType(vorlu_), requester_) == &rule; };
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
  if (rule.tellsOfKill) vorlu_.log(killingText);
  return kill(other);
}

Coordinator::Outcome Coordinator::awaitEnd(const Duplicate& other) {
  const WaitEnd end = pollOther(other, requestPolls, [] { return true; });
  if (end == WaitEnd::gone) return Outcome::lookAgain;
  vorlu_.log(killingText);
  return kill(other);
}

Coordinator::Outcome Coordinator::followInstall(const Duplicate& other) {
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

Coordinator::Outcome Coordinator::awaitInstallInit(const Duplicate& other, const InstallSubject& app) {
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

Coordinator::Outcome Coordinator::awaitInstallRun(const Duplicate& other, const InstallSubject& app) {
  const std::string runType = readRunType(vorlu_);
  const WaitEnd end = pollOther(other, requestPolls, [&] { return readRunType(vorlu_) == runType; });
  return end == WaitEnd::gone ? Outcome::lookAgain : waitForAppInstall(other, app);
}

Coordinator::Outcome Coordinator::waitForAppInstall(const Duplicate& other, const InstallSubject& app) {
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

Coordinator::Outcome Coordinator::awaitInstallComplete(const Duplicate& other, const InstallSubject& app) {
  if (pollOther(other, installPhasePolls, [] { return true; }) == WaitEnd::gone) return Outcome::lookAgain;
  vorlu_.log(
      fmt::format("Killing duplicate Vorlu process ({}) as the {} has install already completed", other.pid, app.name));
  return kill(other);
}

/// A younger process with the same id is another one.
bool Coordinator::hasGone(const Duplicate& other) {
  const auto age = processAge(vorlu_, other.pid);
  return !age || *age < other.age;
}

std::string Coordinator::requestedName() {
  if (requester_ == Requester::selfService) return "update";
  return installSubject(vorlu_, vorlu_.modes.requestedApp).name;
}

}  // namespace vorlu
