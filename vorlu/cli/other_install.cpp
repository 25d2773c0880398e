#include "vorlu/cli/other_install.h"

#include <algorithm>

#include "vorlu/detection/find_app.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::optional<AppBlueprints> findEntry(Vorlu& vorlu, const std::string& identifier) {
  Result<std::string> text = vorlu.platform.files.read(paths::offlineData);
  if (!text) return std::nullopt;
  const auto entries = decodeJson<std::vector<AppBlueprints>>(std::move(*text));
  if (!entries) return std::nullopt;
  const auto entry = std::find_if(entries->rbegin(), entries->rend(),
                                  [&](const AppBlueprints& app) { return isNamedBy(app, identifier); });
  return entry == entries->rend() ? std::nullopt : std::optional(*entry);
}

}  // namespace

InstallSubject installSubject(Vorlu& vorlu, const std::string& identifier) {
  InstallSubject subject{"another App", std::nullopt};
  if (identifier.empty()) return subject;
  subject.entry = findEntry(vorlu, identifier);
  subject.name = subject.entry ? subject.entry->appName.value_or(identifier) : identifier;
  return subject;
}

}  // namespace vorlu
