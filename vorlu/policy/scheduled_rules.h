#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "vorlu/policy/deferrals.h"

namespace vorlu {

/// Who started the scheduled flow.
enum class Trigger { run, prompt, testPrompt, timerPrompt, selfService };
/// By the sub-argument in lower case; any other text is a recurring run.
Trigger triggerOf(std::string_view subArgument);

/// The run type of a flow at its start, and with updates to ask for.
const char* initialRunType(Trigger trigger);
const char* requiredRunType(Trigger trigger);

enum class PromptChoice {
  initial,
  graceCountUsedUp,
  graceDeferralsDisabled,
  graceOnDemand,  ///< a timer prompt
  none,           ///< straight to the update
};
/// What the user is shown. `mode` is that of the run, which in Self Service is none of the profile's; `left` are the
/// deferrals left.
PromptChoice promptChoice(DeferralMode mode, Trigger trigger, std::optional<std::int64_t> left);

}  // namespace vorlu
