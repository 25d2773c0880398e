#include "vorlu/cli/console_io.h"

#include <fmt/format.h>

namespace vorlu {
namespace {

constexpr const char* usage = R"(
Vorlu CLI Usage:

  --update check, -u check
          Checks for any new updates. Updates will be installed where possible, otherwise updates are cached

  --update run, -u run
          Triggers the recurring Vorlu run mechanism. Not for general use

  --update force, -u force
          Tells Vorlu to check for forced updates. Forced updates must be marked for this to work

  --update prompt, -u prompt
          Prompts users to install any cached updates. Run time limitations are respected with this flag

  --update testPrompt, -u testPrompt
          Prompts users to install any cached updates. Run time limitations are ignored with this flag

  --update timerPrompt, -u timerPrompt
          Calls the cached update grace period prompt on-demand as opposed to when all deferrals are used

  --update selfService, -u selfService
          Checks for updates on-demand. To be used in a Jamf Pro Self Service policy, not for general use

  --update self, -u self
          Checks for updates for the Vorlu installation on-demand. Self updates must be enabled to update Vorlu

  --install "AppIdentifier", -i "AppIdentifier"
          Installs a specified Application. Note: this is for installs only, not updates

  --installProgress "AppIdentifier", -ip "AppIdentifier"
          Installs a specified Application and shows progress bar. Note: this is for installs only, not updates

  --check "AppIdentifier", -c "AppIdentifier"
          Validates the specified App Identifier

  --report submit, -r submit
          Sends updated report information to the Vorlu server on-demand

  --version, -v
          Prints the installed Vorlu version

  --help, -h
          Displays this help page

For unique App installation identifiers, please refer to the App Catalog
For support contact {}
)";

}  // namespace

void ConsoleIO::printUsage() const {
  console_.print(fmt::format(usage, site_.supportContact()));
}

void printBanner(Console& console, const Site& site) {
  console.print("Vorlu CLI agent");
  const Result<std::string> maker = site.open(SiteText::makerLine);
  console.print(maker ? *maker : std::string{});
  console.print(fmt::format("Support: {}", site.supportContact()));
  ConsoleIO(console, site).printUsage();
}

}  // namespace vorlu
