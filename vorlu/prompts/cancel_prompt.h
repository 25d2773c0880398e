#pragma once

#include <optional>
#include <string>

namespace vorlu {

struct Vorlu;

/// The small prompt that tells a user why there is no app in the end.
struct CancelPrompt {
  std::string title;
  std::string message;
  std::string icon;
  std::string position;                    ///< validated
  std::optional<std::string> overlayIcon;  ///< absent for a prompt without the flag; empty for none
};

enum class CancelReason {
  notInCatalog,
  notEnabled,  ///< the lists of allowed and excluded apps
  alreadyInstalled,
  installFailed,
};

/// Title, text and icon for a reason; the error icon, or the main icon of scheduled runs where that is missing.
CancelPrompt prepareCancelPrompt(Vorlu& vorlu, CancelReason reason, const std::string& appName);
/// "Install Cancelled" with this text.
CancelPrompt prepareCancelPrompt(Vorlu& vorlu, const std::string& reason);

/// Shows the prompt and waits until the user closes it, as long as that takes.
void showCancelPrompt(Vorlu& vorlu, const CancelPrompt& prompt);

}  // namespace vorlu
