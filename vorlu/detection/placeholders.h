#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vorlu/server/blueprint.h"

namespace vorlu {

struct Vorlu;

/// What stands for the placeholders of a catalog text. A placeholder without a value stays as it is.
struct Placeholders {
  std::optional<std::string_view> latestVersion;
  std::optional<std::string_view> currentUser;
};

/// Replaces every "%latestVersion%" and "%currentUser%" that has a value. What was put in is not looked at again.
std::string expandPlaceholders(std::string_view text, const Placeholders& values);

/// `text` of `entry` where the version is filled in: `infoPlistPath` and the download scripts.
std::string expandVersion(std::string_view text, const AppBlueprints& entry);
/// `appPath`, where version and console user are filled in.
std::string expandAppPath(Vorlu& vorlu, const AppBlueprints& entry);
/// One of `alternatePaths`, where only the console user is filled in.
std::string expandAlternatePath(Vorlu& vorlu, std::string_view path);

/// Name of the console user, asked once in a process.
const std::string& consoleUserName(Vorlu& vorlu);

}  // namespace vorlu
