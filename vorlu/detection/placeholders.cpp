#include "vorlu/detection/placeholders.h"

#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::string_view latestVersionMark = "%latestVersion%";
constexpr std::string_view currentUserMark = "%currentUser%";

}  // namespace

std::string expandPlaceholders(std::string_view text, const Placeholders& values) {
  std::string result;
  while (true) {
    const std::size_t at = text.find('%');
    if (at == std::string_view::npos) return result.append(text);
    result.append(text.substr(0, at));
    text.remove_prefix(at);
    if (values.latestVersion && text.starts_with(latestVersionMark)) {
      result.append(*values.latestVersion);
      text.remove_prefix(latestVersionMark.size());
    } else if (values.currentUser && text.starts_with(currentUserMark)) {
      result.append(*values.currentUser);
      text.remove_prefix(currentUserMark.size());
    } else {
      result += '%';
      text.remove_prefix(1);
    }
  }
}

std::string expandVersion(std::string_view text, const AppBlueprints& entry) {
  return expandPlaceholders(text, {orEmpty(entry.latestVersion), std::nullopt});
}

std::string expandAppPath(Vorlu& vorlu, const AppBlueprints& entry) {
  const std::string& path = orEmpty(entry.appPath);
  if (path.find('%') == std::string::npos) return path;
  return expandPlaceholders(path, {orEmpty(entry.latestVersion), consoleUserName(vorlu)});
}

std::string expandAlternatePath(Vorlu& vorlu, std::string_view path) {
  if (path.find('%') == std::string_view::npos) return std::string(path);
  return expandPlaceholders(path, {std::nullopt, consoleUserName(vorlu)});
}

const std::string& consoleUserName(Vorlu& vorlu) {
  if (!vorlu.consoleUser) vorlu.consoleUser = vorlu.platform.consoleUser.name();
  return *vorlu.consoleUser;
}

}  // namespace vorlu
