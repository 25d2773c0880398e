#pragma once

#include "vorlu/prompts/update_prompt.h"

namespace vorlu {

/// Shows the prompt with one button and a countdown, and brings it to the front each minute. However it ends is logged
/// and told to Jamf Pro; the update follows in any case.
void showGracePrompt(Vorlu& vorlu, const UpdatePrompt& prompt);

}  // namespace vorlu
