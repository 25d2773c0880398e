#pragma once

#include <vector>

#include "vorlu/detection/app_inventory.h"

namespace vorlu {

struct Vorlu;

/// Who asks for an update run.
enum class UpdateRunKind {
  scheduled,  ///< settings of `ScheduledUpdates`
  forced,     ///< settings of `ForcedUpdates`; for the selected app alone, which `updates` holds as its only entry
  test,       ///< of the testing catalog: no window
};

/// Updates one application after the other in front of the user: opens the progress window, quits each app or forces it
/// to quit, runs the pipeline, relaunches what ran, and closes the window. A failed app doesn't stop the others. The
/// outcome is in `updates.failedAppNames` (of this run alone), `updates.failedUpdates` and `updates.updatesInstalled`.
/// `CurrentRunType` stays as it was. The updates are the ones that the user agreed to, with paths and versions of the
/// check that found them.
void runUpdateWithProgress(Vorlu& vorlu, const std::vector<ApplicationInventory>& updates, UpdateRunKind kind);

}  // namespace vorlu
