#pragma once

#include <optional>
#include <string>

namespace vorlu {

struct Vorlu;

/// The main icon of a run's prompts: the section's `customIcon`, the Self Service branding icon, the App Store's, the
/// agent's own, or a system icon that is taken without a look.
std::string chooseDialogIcon(Vorlu& vorlu, const std::optional<std::string>& customIcon);

/// The branding icon of Jamf Self Service under the console user's home; empty when there is none.
std::string brandingIcon(Vorlu& vorlu);

/// The icon over the main icon, from `initialPromptOverlayIcon` or `updateProgressOverlayIcon` of a section: a path as
/// it is, or in any letter case "selfservice" for the branding icon. Empty for none; a missing branding icon is logged,
/// as a warning for the initial prompt.
std::string initialOverlayIcon(Vorlu& vorlu, const std::optional<std::string>& configured);
std::string progressOverlayIcon(Vorlu& vorlu, const std::optional<std::string>& configured);

/// The agent's error icon, or the system's.
std::string errorIcon(Vorlu& vorlu);
/// The agent's error icon, or `otherwise` where it is missing.
std::string errorIconOr(Vorlu& vorlu, const std::string& otherwise);
/// The agent's success icon; empty when it is missing.
std::string successIcon(Vorlu& vorlu);

}  // namespace vorlu
