#pragma once

#include <string>

#include "vorlu/prompts/dialog_invocation.h"

namespace vorlu {

/// The closing prompt of an install: "Do you want to launch {appName} now?".
struct InstallCompletePrompt {
  std::string appName;
  std::string installedPath;  ///< what "Yes" opens
  std::string icon;
  std::string position;  ///< validated
};

/// The closing prompt of an update.
struct UpdateCompletePrompt {
  std::string message;  ///< `UpdatePrompt::completeMessage`
  std::string icon;
  std::string position;  ///< validated
};

/// Close all prompts, show this one for at most 20 seconds and log what came of it. "Yes" has opened the app when this
/// returns: the caller doesn't open it again. No receipt stays behind.
void showCompletePrompt(Vorlu& vorlu, const InstallCompletePrompt& prompt);
void showCompletePrompt(Vorlu& vorlu, const UpdateCompletePrompt& prompt);

/// Removes the receipt of an earlier prompt where there is one; a failure is logged.
void removeCompleteReceipt(Vorlu& vorlu);

/// Starts a prompt in the background form and waits at most 20 seconds for its receipt, Run/completeResult. A prompt
/// that stays is killed and counts as one whose timer ran out. The receipt is removed on every path, a late one too.
PromptExit runCompletePrompt(Vorlu& vorlu, const DialogCommand& command);

}  // namespace vorlu
