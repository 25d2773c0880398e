#pragma once

#include <string>

namespace vorlu {

struct Vorlu;
struct CurrentApp;
struct ApplicationInventory;

/// What is known of an application that may lead to its icon.
struct AppIconSource {
  std::string appName;
  std::string localIcon;  ///< file name in the agent's icon folder, may be empty
  std::string cloudIcon;  ///< URL, may be empty
};

/// Path of an application's icon for the prompts, or its URL when only that answers; else the icon for unknown apps.
/// Empty when there is none at all. A missing icon is logged.
std::string resolveAppIcon(Vorlu& vorlu, const AppIconSource& app);
/// The icon of the selected app.
std::string resolveAppIcon(Vorlu& vorlu, const CurrentApp& app);
/// The icon of a pending update, by its catalog entry.
std::string resolveAppIcon(Vorlu& vorlu, const ApplicationInventory& update);

}  // namespace vorlu
