#include "vorlu/policy/test_update_flow.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "vorlu/policy/scheduled_outcome.h"
#include "vorlu/policy/update_pass.h"
#include "vorlu/policy/update_run.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::string joinedOrNone(const std::vector<std::string>& names) {
  return names.empty() ? "N/A" : fmt::format("{}", fmt::join(names, ", "));
}

/// False when there is nothing to do.
bool updateWhatIsInUse(Vorlu& vorlu) {
  const std::vector<ApplicationInventory> updates = vorlu.updates.skippedUpdates;
  if (updates.empty()) {
    vorlu.log("No cached updates");
    return false;
  }
  logFoundUpdates(vorlu, updates);
  runUpdateWithProgress(vorlu, updates, UpdateRunKind::test);
  return true;
}

}  // namespace

void testUpdateFlow(Vorlu& vorlu) {
  setCurrentRunType(vorlu, "scheduledUpdateInitTestPrompt");
  initialiseUpdates(vorlu);
  std::vector<std::string> failed = vorlu.updates.failedAppNames;
  if (updateWhatIsInUse(vorlu))
    failed.insert(failed.end(), vorlu.updates.failedAppNames.begin(), vorlu.updates.failedAppNames.end());
  if (failed.empty()) {
    vorlu.log("All updates installed successfully");
    endRun(vorlu, 0);
  }
  vorlu.log("Error: One or more update attempts failed");
  vorlu.log(fmt::format("Successful updates: {}", joinedOrNone(vorlu.updates.updatesInstalled)));
  vorlu.log(fmt::format("Failed updates: {}", joinedOrNone(failed)));
  endRun(vorlu, 1);
}

}  // namespace vorlu
