#include "vorlu/cli/dispatch.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "vorlu/cli/command_option.h"
#include "vorlu/cli/console_io.h"
#include "vorlu/cli/first_install.h"
#include "vorlu/cli/initialise_run.h"
#include "vorlu/cli/recurring_run.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/detection/update_check.h"
#include "vorlu/install/component_update.h"
#include "vorlu/install/install_command.h"
#include "vorlu/install/self_update.h"
#include "vorlu/policy/forced_update_flow.h"
#include "vorlu/policy/scheduled_update_flow.h"
#include "vorlu/policy/test_update_flow.h"
#include "vorlu/policy/update_check_flow.h"
#include "vorlu/reporting/report.h"
#include "vorlu/server/key_material.h"
#include "vorlu/server/signed_request.h"
#include "vorlu/state/agent_version.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using Arguments = std::vector<std::string>;

constexpr const char* rootForInstalls = "Vorlu must be run as root to perform App installations.";
constexpr const char* rootForUpdates = "Vorlu must be run as root to perform App updates.";

void printUsage(Vorlu& vorlu) {
  ConsoleIO(vorlu.platform.console, vorlu.site).printUsage();
}

bool isRoot(Vorlu& vorlu) {
  return vorlu.platform.processes.userName() == "root";
}

/// The sub-argument, which stands second. An option that is the last argument of the line stands without one.
const std::string& requireSubArgument(Vorlu& vorlu, const Arguments& arguments,
                                      std::initializer_list<std::string_view> lastForms) {
  const bool bare = std::find(lastForms.begin(), lastForms.end(), arguments.back()) != lastForms.end();
  if (bare || arguments.size() < 2) {
    printUsage(vorlu);
    exitProcess(1);
  }
  return arguments[1];
}

void requireRoot(Vorlu& vorlu, const char* line) {
  if (isRoot(vorlu)) return;
  vorlu.platform.console.print("Error: Permission denied.");
  vorlu.platform.console.print(line);
  exitProcess(0);
}

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

void installOnRequest(Vorlu& vorlu, const Arguments& arguments) {
  const std::string& identifier = requireSubArgument(vorlu, arguments, {"-i", "--install"});
  vorlu.modes.requestedApp = identifier;
  requireRoot(vorlu, rootForInstalls);
  vorlu.modes.installMode = true;
  vorlu.log("Initialising the Application install mechanism...");
  initialiseRun(vorlu, {});
  installApp(vorlu, identifier, false);
}

void installWithProgress(Vorlu& vorlu, const Arguments& arguments) {
  const std::string& identifier =
      requireSubArgument(vorlu, arguments, {"-ip", "--installProgress", "--installprogress"});
  vorlu.modes.requestedApp = identifier;
  requireRoot(vorlu, rootForInstalls);
  vorlu.modes.installProgressMode = true;
  vorlu.log("Initialising the Application install mechanism...");
  vorlu.log("Show progress flag specified", silent);
  initialiseRun(vorlu, {.showProgress = true});
  installApp(vorlu, identifier, true);
}

void installFromTestingCatalog(Vorlu& vorlu, const Arguments& arguments) {
  const std::string& identifier = requireSubArgument(vorlu, arguments, {"-it"});
  vorlu.modes.requestedApp = identifier;
  requireRoot(vorlu, rootForInstalls);
  vorlu.modes.installMode = true;
  vorlu.modes.testingBlueprints = true;
  vorlu.modes.testInstall = true;
  vorlu.log("Initialising the Application install mechanism...");
  initialiseRun(vorlu, {});
  installApp(vorlu, identifier, false);
}

void checkIdentifier(Vorlu& vorlu, const Arguments& arguments) {
  const std::string& identifier = requireSubArgument(vorlu, arguments, {"-c", "--check"});
  initialiseRun(vorlu, {.validateOnly = true});
  Console& console = vorlu.platform.console;
  const CurrentApp& app = vorlu.currentApp;
  if (!findApp(vorlu, identifier) || app.appIdentifier.empty()) {
    console.print(
        fmt::format("Error: An App with the identifier \"{}\" was not found in the Vorlu App catalog.", identifier));
    console.print("For valid App identifiers, please refer to the App catalog");
  } else if (app.legacyIdentifierUsed) {
    console.print(fmt::format(
        "{} was found in the Vorlu catalog, but is the legacy App installation format. The current format is {}",
        app.appName, app.appIdentifier));
  } else {
    console.print(fmt::format("{} was found in the Vorlu catalog.", app.appName));
  }
}

void sendReport(Vorlu& vorlu, const Arguments& arguments) {
  requireSubArgument(vorlu, arguments, {"-r", "--report"});
  requireRoot(vorlu, "Vorlu must be run as root for reporting functions");
  initialiseRun(vorlu, {});
  vorlu.modes.reportMode = true;
  checkForUpdates(vorlu, "", true);
  buildAndSubmitReport(vorlu);
  endRun(vorlu, 0);
}

void initialiseInstallation(Vorlu& vorlu) {
  requireRoot(vorlu, "Vorlu must be run as root");
  firstInstallInitialise(vorlu);
  endRun(vorlu, 0);
}

void deleteKeys(Vorlu& vorlu) {
  requireRoot(vorlu, "Vorlu must be run as root");
  deleteKeychainItems(vorlu);
  endRun(vorlu, 0);
}

void testUpdates(Vorlu& vorlu, const Arguments& arguments) {
  const std::string& subArgument = requireSubArgument(vorlu, arguments, {"-ut"});
  requireRoot(vorlu, rootForUpdates);
  vorlu.modes.updateMode = true;
  if (lowered(subArgument) != "testblueprints") {
    printUsage(vorlu);
    return;
  }
  vorlu.modes.testingBlueprints = true;
  initialiseRun(vorlu, {});
  testUpdateFlow(vorlu);
}

void checkForNewUpdates(Vorlu& vorlu, const std::string& /*form*/) {
  vorlu.modes.updateMode = true;
  initialiseRun(vorlu, {});
  updateCheckFlow(vorlu, false);
  buildAndSubmitReport(vorlu);
  endRun(vorlu, 0);
}

void updateAgent(Vorlu& vorlu, const std::string& /*form*/) {
  vorlu.modes.updateMode = true;
  if (vorlu.preferences.general().autoUpdate) {
    fetchServerData(vorlu);
    selfUpdate(vorlu);
    updateComponents(vorlu, true);
  } else {
    vorlu.platform.console.print(
        "Vorlu self updates are not allowed. Contact your administrator and ask for Self Updates to be enabled and try "
        "again");
  }
  endRun(vorlu, 0);
}

void promptForUpdates(Vorlu& vorlu, const std::string& form) {
  vorlu.modes.updateMode = true;
  initialiseRun(vorlu, {});
  scheduledUpdateFlow(vorlu, form);
  endRun(vorlu, vorlu.modes.runExitStatus);
}

void updateFromSelfService(Vorlu& vorlu, const std::string& form) {
  vorlu.modes.selfServiceMode = true;
  setCurrentRunType(vorlu, "selfServiceInit");
  initialiseRun(vorlu, {});
  scheduledUpdateFlow(vorlu, form);
  endRun(vorlu, vorlu.modes.runExitStatus);
}

void forceUpdates(Vorlu& vorlu, const std::string& /*form*/) {
  vorlu.modes.forcedMode = true;
  announceForcedUpdates(vorlu);
  initialiseRun(vorlu, {});
  forcedUpdateFlow(vorlu);
}

void runRecurring(Vorlu& vorlu, const std::string& /*form*/) {
  recurringRun(vorlu);
}

struct UpdateForm {
  std::string_view form;  ///< in lower case
  void (*flow)(Vorlu& vorlu, const std::string& form);
};
constexpr std::array updateForms = {UpdateForm{"-force", forceUpdates},
                                    UpdateForm{"force", forceUpdates},
                                    UpdateForm{"prompt", promptForUpdates},
                                    UpdateForm{"testprompt", promptForUpdates},
                                    UpdateForm{"timerprompt", promptForUpdates},
                                    UpdateForm{"selfservice", updateFromSelfService},
                                    UpdateForm{"run", runRecurring},
                                    UpdateForm{"check", checkForNewUpdates},
                                    UpdateForm{"self", updateAgent}};

void update(Vorlu& vorlu, const Arguments& arguments) {
  const std::string& subArgument = requireSubArgument(vorlu, arguments, {"-u", "--update"});
  const std::string form = lowered(subArgument);
  const auto* known = std::find_if(updateForms.begin(), updateForms.end(),
                                   [&form](const UpdateForm& candidate) { return candidate.form == form; });
  if (known == updateForms.end()) {
    vorlu.platform.console.print(fmt::format("Invalid update argument: {}", subArgument));
    printUsage(vorlu);
    return;
  }
  requireRoot(vorlu, rootForUpdates);
  known->flow(vorlu, form);
}

}  // namespace

void dispatchCommand(Vorlu& vorlu, const Arguments& arguments) {
  switch (optionForArgument(arguments.front())) {
    case CommandOption::help:
    case CommandOption::quit:
    case CommandOption::unknown:
      return printUsage(vorlu);
    case CommandOption::version:
      vorlu.platform.console.print(fmt::format("Vorlu Version: {}", agentVersion));
      exitProcess(0);
    case CommandOption::install:
      return installOnRequest(vorlu, arguments);
    case CommandOption::installProgress:
      return installWithProgress(vorlu, arguments);
    case CommandOption::installTest:
      return installFromTestingCatalog(vorlu, arguments);
    case CommandOption::check:
      return checkIdentifier(vorlu, arguments);
    case CommandOption::report:
      return sendReport(vorlu, arguments);
    case CommandOption::initialise:
      return initialiseInstallation(vorlu);
    case CommandOption::deleteKeys:
      return deleteKeys(vorlu);
    case CommandOption::updateTest:
      return testUpdates(vorlu, arguments);
    case CommandOption::update:
      return update(vorlu, arguments);
  }
}

}  // namespace vorlu
