#pragma once

#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/prompts/update_prompt.h"

namespace vorlu {

/// Shows the prompt with an update and a defer or skip button, once, and returns the answer. What it logs:
/// the choice to update (to Jamf Pro as well) and a timer that ran out. The caller shows it again after `timerRanOut`,
/// and records the deferral after `button2` and after `quitUnexpectedly` (whose exit text a message quotes).
///
/// In Self Service `button2` doesn't come back: the skipped update is logged and told to Jamf Pro, `CurrentRunType` is
/// "N/A", and the run ends with 0.
PromptExit showInitialPrompt(Vorlu& vorlu, const UpdatePrompt& prompt);

}  // namespace vorlu
