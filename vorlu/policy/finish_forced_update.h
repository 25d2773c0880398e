#pragma once

#include <string>

#include "vorlu/policy/forced_mark.h"

namespace vorlu {

struct Vorlu;

/// What the user saw of a forced update. An update without a user shows no prompt and launches nothing.
struct ForcedSight {
  std::string completeMessage;
  std::string icon;
  std::string position;  ///< of the window and the prompts
  bool wasQuit = false;  ///< this run has quit the app
};

/// Ends a receipt whose app is up to date now: compliance, relaunch, prompt, removal of the receipt, and a delay that
/// spreads a fleet's calls. `sight` is null for an update that the user didn't see.
void finishSuccessfulUpdate(Vorlu& vorlu, const ForcedMark& mark, const ForcedSight* sight);

/// Tells of an update that failed. The receipt stays; its period begins anew, so that the app isn't quit again by the
/// next run.
void finishFailedUpdate(Vorlu& vorlu, ForcedMark& mark, const ForcedSight* sight);

}  // namespace vorlu
