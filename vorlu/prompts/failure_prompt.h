#pragma once

#include <string>
#include <vector>

#include "vorlu/prompts/update_prompt.h"

namespace vorlu {

struct FailurePrompt {
  std::string title;
  std::string message;
  std::string icon;
  std::string appList;  ///< JSON; empty in a prompt without a list
};

/// For a scheduled run: one app in words, several as a list. `dialogIcon` stands in for a missing error icon.
FailurePrompt prepareFailurePrompt(Vorlu& vorlu, const std::vector<PromptApp>& failed, const std::string& dialogIcon);
/// For a forced update.
FailurePrompt prepareForcedFailurePrompt(Vorlu& vorlu, const std::string& appName);

/// Shows the prompt, for at most 120 seconds, and logs how it ended. That has no effect on the run.
void showFailurePrompt(Vorlu& vorlu, const FailurePrompt& prompt);

}  // namespace vorlu
