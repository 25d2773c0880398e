#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorlu/detection/app_inventory.h"
#include "vorlu/platform/platform.h"
#include "vorlu/state/error_record.h"

namespace vorlu {
class Site;
}

namespace vorlu::ctl {

/// An update that waits, by the inventory of the last check.
struct PendingUpdate {
  std::string app;
  std::string installedVersion;
  std::string latestVersion;
  bool cached = false;  ///< its installer lies in the download cache
  static constexpr auto fields() {
    using P = PendingUpdate;
    return std::array{field<&P::app>("app"), field<&P::installedVersion>("installedVersion"),
                      field<&P::latestVersion>("latestVersion"), field<&P::cached>("cached")};
  }
};

/// What the agent's files tell of its last runs. Moments are in ISO 8601; one that isn't known is absent.
struct AgentStatus {
  std::optional<std::string> agentVersion;  ///< of the installed program
  std::optional<std::string> dialogVersion;
  std::optional<std::string> preferences;   ///< path; absent when all keys are at their default
  std::optional<std::string> run;           ///< type of a run at work
  std::optional<std::string> lastActivity;  ///< the last line of the log
  std::optional<std::string> catalogFetched;
  std::optional<std::string> nextCheck;   ///< the hourly check isn't due before
  std::optional<std::string> lastPrompt;  ///< or the last update
  std::optional<std::string> nextPrompt;  ///< as the report tells it
  std::optional<std::string> lastReport;
  std::optional<std::string> lastCompliant;  ///< as run data holds it
  std::optional<std::string> deferralsLeft;  ///< a number or "N/A"
  std::optional<bool> userDeferred;
  std::optional<std::vector<PendingUpdate>> pending;
  std::vector<std::string> forced;  ///< apps that are marked for a forced update
  std::optional<VorluErrors> lastError;
  std::optional<VorluErrors> lastWarning;
  std::vector<std::string> unreadable;  ///< why files of the state can't be read

  static constexpr auto fields() {
    using S = AgentStatus;
    return std::array{field<&S::agentVersion>("agentVersion"),
                      field<&S::dialogVersion>("dialogVersion"),
                      field<&S::preferences>("preferences"),
                      field<&S::run>("run"),
                      field<&S::lastActivity>("lastActivity"),
                      field<&S::catalogFetched>("catalogFetched"),
                      field<&S::nextCheck>("nextCheck"),
                      field<&S::lastPrompt>("lastPrompt"),
                      field<&S::nextPrompt>("nextPrompt"),
                      field<&S::lastReport>("lastReport"),
                      field<&S::lastCompliant>("lastCompliant"),
                      field<&S::deferralsLeft>("deferralsLeft"),
                      field<&S::userDeferred>("userDeferred"),
                      field<&S::pending>("pending"),
                      field<&S::forced>("forced"),
                      field<&S::lastError>("lastError"),
                      field<&S::lastWarning>("lastWarning"),
                      field<&S::unreadable>("unreadable")};
  }
};

/// Reads the state; what can't be read is named and leaves its values out. Changes nothing.
AgentStatus readStatus(Platform& mac, const Site& site);

std::string toText(const AgentStatus& status);

}  // namespace vorlu::ctl
