#include "vorlu/cli/run_type_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "vorlu/state/run_modes.h"

namespace vorlu {
namespace {

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool isUpdateMechanism(std::string_view type) {
  return contains(type, "scheduledUpdate") || contains(type, "forcedUpdate");
}
bool isSelfService(std::string_view type) {
  return contains(type, "selfService");
}
bool isMechanismInit(std::string_view type) {
  return isUpdateMechanism(type) && contains(type, "Init") && !contains(type, "Test");
}
bool isMechanismTest(std::string_view type) {
  return isUpdateMechanism(type) && contains(type, "Init") && contains(type, "Test");
}
/// A forced update has a run type of its own while one app is at work.
bool isMechanismAtWork(std::string_view type) {
  return type == "scheduledUpdateRequired" || type == "forcedUpdateRequired" || type == "forcedUpdate";
}
template <const char* const& text>
bool is(std::string_view type) {
  return type == text;
}
constexpr const char* selfServiceInit = "selfServiceInit";
constexpr const char* selfServiceRequired = "selfServiceUpdateRequired";
constexpr const char* hourlyCheck = "hourlyUpdateCheck";
constexpr const char* reporting = "ReportingAuto";
constexpr const char* manualCheck = "manualUpdateCheck";

bool anyone(Requester /*requester*/) {
  return true;
}
bool installs(Requester requester) {
  return requester == Requester::install;
}
bool selfServices(Requester requester) {
  return requester == Requester::selfService;
}
bool anything(std::string_view /*type*/) {
  return true;
}

const std::array<RunTypeRule, 11> rules{{
    {isInstallType, anyone, RuleAction::followInstall, nullptr},
    {isSelfService, selfServices, RuleAction::yield, "Another Self Service update is already running. Exiting..."},
    {is<selfServiceInit>, installs, RuleAction::wait,
     "Another instance of Vorlu is currently initialising a Self Service update check. The {request} request has been "
     "queued. Please wait...",
     "Error: Another instance was found for a Self Service update check, but the update check failed to initialise. "
     "Killing duplicate Vorlu process..."},
    {is<selfServiceRequired>, installs, RuleAction::wait,
     "Another instance of Vorlu is currently attempting to install updates via Self Service. The {request} request has "
     "been queued. Please wait...",
     "Error: Another instance was found for a Self Service update check, but the update attempt took longer than "
     "expected. Please check your internet connection",
     true, false, "The Self Service run completed. Waiting for duplicate process to quit..."},
    {isMechanismInit, anyone, RuleAction::cancelOther,
     "Another instance of Vorlu is currently initialising a {type} check. Cancelling the {type} to prioritse the "
     "install. Please wait..."},
    {isMechanismTest, anyone, RuleAction::wait,
     "Another instance of Vorlu is currently initialising a {type} via the {flag} flag. Please wait...",
     "Error: Another instance was initialising a {type} check via the {flag} flag, but the initialisation attempt took "
     "longer than expected. Please check your internet connection",
     true, true, "The {type} run completed. Waiting for duplicate process to quit..."},
    {isMechanismAtWork, anyone, RuleAction::wait,
     "Another instance of Vorlu is currently attempting to install updates via the {type} mechanism. The {request} "
     "request has been queued. Please wait...",
     "Error: Another instance was found for a {type} check, but the update attempt took longer than expected. Please "
     "check your internet connection",
     true, false, "The {type} run completed. Waiting for duplicate process to quit..."},
    {is<hourlyCheck>, anyone, RuleAction::cancelOther,
     "Another instance of Vorlu is currently initialising the hourly update check. Cancelling the scheduled update to "
     "prioritse the install. Please wait..."},
    {is<reporting>, anyone, RuleAction::cancelOther,
     "Another instance of Vorlu is currently gathering reporting data. Cancelling the computer report to prioritse the "
     "install. Please wait..."},
    {is<manualCheck>, anyone, RuleAction::wait,
     "Another instance of Vorlu is currently running a user-initiated update check. The {request} request has been "
     "queued. Please wait...",
     "Error: Another instance was found for a user-initiated update check, but the update attempt took longer than "
     "expected. Please check your internet connection",
     true, true},
    {anything, anyone, RuleAction::goOn, nullptr},
}};

const char* flagOf(std::string_view type) {
  if (contains(type, "forcedUpdate")) return "\"force\"";
  return contains(type, "TestPrompt") ? "\"testPrompt\"" : "\"prompt\"";
}

}  // namespace

Requester requesterOf(const RunModes& modes) {
  if (modes.installMode || modes.installProgressMode) return Requester::install;
  if (modes.selfServiceMode) return Requester::selfService;
  if (modes.updateMode || modes.forcedMode) return Requester::update;
  if (modes.runMode || modes.hourlyMode) return Requester::background;
  return Requester::nobody;
}

bool isBackground(const RunModes& modes) {
  return modes.runMode || modes.hourlyMode || modes.forcedMode;
}

const RunTypeRule& ruleFor(std::string_view runType, Requester requester) {
  return *std::find_if(rules.begin(), rules.end(),
                       [&](const RunTypeRule& rule) { return rule.matches(runType) && rule.appliesTo(requester); });
}

std::string ruleText(const char* text, std::string_view runType, Requester requester) {
  return fmt::format(fmt::runtime(text),
                     fmt::arg("type", contains(runType, "forcedUpdate") ? "forced update" : "scheduled update"),
                     fmt::arg("flag", flagOf(runType)),
                     fmt::arg("request", requester == Requester::selfService ? "update" : "install"));
}

bool isInstallType(std::string_view runType) {
  return contains(runType, "appInstall");
}

OtherInstall parseInstallType(std::string_view runType) {
  OtherInstall install;
  const std::size_t colon = runType.find(':');
  const std::string_view head = runType.substr(0, colon);
  if (colon != std::string_view::npos) install.identifier = runType.substr(colon + 1);
  if (head.ends_with("Run")) install.phase = InstallPhase::running;
  if (head.ends_with("Complete")) install.phase = InstallPhase::complete;
  return install;
}

}  // namespace vorlu
