#pragma once

#include <optional>
#include <string>

namespace vorlu {

struct Vorlu;

/// Why an install ended without an app, for its user.
struct CancelPrompt {
  std::string title;    ///< one of `prompt_texts.h`
  std::string message;  ///< in the tool's Markdown
  std::string icon;
  /// Icon over it, may be empty; absent for the prompt that has no such flag.
  std::optional<std::string> overlayIcon;
  std::string position;  ///< validated
};

/// Shows the small prompt and waits until the user closes it.
void showCancelPrompt(Vorlu& vorlu, const CancelPrompt& prompt);

}  // namespace vorlu
