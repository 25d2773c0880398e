#pragma once

#include <string>
#include <string_view>

namespace vorlu {

struct RunModes;

/// Who asks to work beside another agent.
enum class Requester {
  nobody,   ///< a run that nothing needs to wait for, as a report
  install,  ///< a user's or a policy's install
  selfService,
  update,      ///< an administrator's update or forced update: gives up at once
  background,  ///< the recurring run
};
Requester requesterOf(const RunModes& modes);
/// A run of the scheduler, or a forced one, which doesn't queue behind several others.
bool isBackground(const RunModes& modes);

/// What an install or Self Service run does about the one agent before it.
enum class RuleAction {
  followInstall,  ///< by the phase of the install
  yield,          ///< ends with 0
  cancelOther,    ///< kills it at once
  wait,           ///< until its run type has moved on
  goOn,
};

/// One row: the texts of a rule with the placeholders {type}, {flag} and {request}; null where a row has none.
struct RunTypeRule {
  bool (*matches)(std::string_view runType);
  bool (*appliesTo)(Requester requester);
  RuleAction action;
  const char* announcement;
  const char* overdue = nullptr;  ///< at the last poll of a wait
  bool tellsOfKill = false;       ///< "Killing duplicate Vorlu process..." follows in a line of its own
  bool measuresNetwork = false;   ///< between those two
  const char* movedOn = nullptr;  ///< the other has done its work and only has to end; without it: look again
};

/// The first row that matches; the last one matches everything.
const RunTypeRule& ruleFor(std::string_view runType, Requester requester);

/// A rule's text for a run type and a requester.
std::string ruleText(const char* text, std::string_view runType, Requester requester);

/// Whether a run type is one of an install.
bool isInstallType(std::string_view runType);

enum class InstallPhase { initialising, running, complete };
/// What a run type that contains "appInstall" says.
struct OtherInstall {
  InstallPhase phase = InstallPhase::initialising;
  std::string identifier;  ///< empty until the app is resolved
};
OtherInstall parseInstallType(std::string_view runType);

/// Polls of the documented waits.
inline constexpr int requestPolls = 240;        ///< 5 seconds apart: 20 minutes
inline constexpr int installPhasePolls = 24;    ///< 5 seconds apart
inline constexpr int initialisationPolls = 30;  ///< 10 seconds apart
inline constexpr int installEndPolls = 9;       ///< 3 seconds apart

}  // namespace vorlu
