#include "vorlu/cli/entry.h"

#include <exception>

#include <fmt/format.h>

#include "vorlu/cli/console_io.h"
#include "vorlu/cli/dispatch.h"
#include "vorlu/platform/termination.h"
#include "vorlu/state/end_run.h"
#include "vorlu/vorlu.h"

namespace vorlu {

int runVorlu(Vorlu& vorlu, const std::vector<std::string>& arguments) {
  if (arguments.empty()) {
    printBanner(vorlu.platform.console, vorlu.site);
    return 0;
  }
  try {
    dispatchCommand(vorlu, arguments);
    return 0;
  } catch (const RunEnded& ended) {
    return ended.status;
  } catch (const Terminated&) {
    vorlu.log("Vorlu was asked to stop. Exiting...");
    return Terminated::status;
  } catch (const std::exception& fault) {
    vorlu.log(fmt::format("Error: Vorlu ended because of an unexpected fault - {}", fault.what()));
    return 1;
  }
}

}  // namespace vorlu
