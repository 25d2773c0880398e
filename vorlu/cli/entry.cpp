#include "vorlu/cli/entry.h"

#include <exception>

#include <fmt/format.h>

#include "vorlu/cli/console_io.h"
#include "vorlu/cli/dispatch.h"
#include "vorlu/state/end_run.h"
#include "vorlu/vorlu.h"

namespace vorlu {

int runVorlu(Platform& platform, const SealedSite& sealed, const std::vector<std::string>& arguments) {
  const Site site(sealed, platform.security);
  if (arguments.empty()) {
    printBanner(platform.console, site);
    return 0;
  }
  Vorlu vorlu(platform, site);
  try {
    dispatchCommand(vorlu, arguments);
    return 0;
  } catch (const RunEnded& ended) {
    return ended.status;
  } catch (const std::exception& fault) {
    vorlu.log(fmt::format("Error: Vorlu ended because of an unexpected fault - {}", fault.what()));
    return 1;
  }
}

}  // namespace vorlu
