#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorlu/detection/app_inventory.h"

namespace vorlu {

struct Vorlu;

/// Who asks for an update run.
enum class UpdateRunKind {
  scheduled,  ///< settings of `ScheduledUpdates`
  forced,     ///< settings of `ForcedUpdates`; for the selected app alone, which `updates` holds as its only entry
  test,       ///< of the testing catalog, with the settings of `ScheduledUpdates` but no window
};

/// How a run shows itself, from its section of the preferences.
struct UpdateRunSettings {
  std::string progressPrompt;              ///< "focusPrompt", "noFocusPrompt" or "noPrompt"; others show it unfocused
  std::string position;                    ///< validated
  std::optional<std::string> overlayIcon;  ///< as configured
  bool autoRelaunchApps = true;
  bool displayCompletePrompt = true;

  bool showsWindow() const { return progressPrompt != "noPrompt"; }
};
/// Logs a position that doesn't exist.
UpdateRunSettings updateRunSettings(Vorlu& vorlu, UpdateRunKind kind);

/// Updates one application after the other in front of the user: opens the progress window, quits each app or forces it
/// to quit, runs the pipeline, relaunches what ran (the forced flow does that itself, once it has told of the outcome),
/// and closes the window. A failed app doesn't stop the others. The
/// outcome is in `updates.failedAppNames` (of this run alone), `updates.failedUpdates` and `updates.updatesInstalled`.
/// `CurrentRunType` stays as it was. The updates are the ones that the user agreed to, with paths and versions of the
/// check that found them; the run looks for updates anew before each of them.
void runUpdateWithProgress(Vorlu& vorlu, std::vector<ApplicationInventory> updates, UpdateRunKind kind,
                           const UpdateRunSettings& settings);
void runUpdateWithProgress(Vorlu& vorlu, std::vector<ApplicationInventory> updates, UpdateRunKind kind);

}  // namespace vorlu
