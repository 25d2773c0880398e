#include "ctl/lint/preferences_lint.h"

#include <fmt/format.h>

#include "ctl/lint/key_check.h"
#include "ctl/lint/preference_rules.h"
#include "ctl/lint/preferences_payload.h"
#include "ctl/lint/property_list_source.h"
#include "vorlu/state/property_list.h"

namespace vorlu::ctl {
namespace {

void checkSettings(SettingsInFile& found, Findings& findings) {
  RecordLint lint(found.value, "", findings);
  const KeyCheck keys(preferenceKeys(), "the agent ignores the whole profile with this");
  keys.check(found.value, lint);
  if (found.value.members.empty())
    lint.warning("", "holds no setting, so the agent runs on its defaults", "add the settings that you want");
  const auto prefs = decodeLocated<CustomPrefs>(found.value);
  SettingsLint settings{prefs, std::move(lint)};
  checkGeneral(settings);
  checkSchedule(settings);
  checkRunLimits(settings);
  checkPrompts(settings);
}

/// The agent's own reader has the last word on a plain list; out of a profile the system makes one.
void checkWithAgent(const std::string& bytes, const std::vector<SettingsInFile>& found, Findings& findings) {
  const bool isPlain = found.size() == 1 && found.front().path.empty();
  if (findings.hasErrors() || !isPlain) return;
  if (const auto read = decodePropertyList<CustomPrefs>(bytes); !read)
    findings.error({1, 1}, "", fmt::format("the agent can't read this file: {}", read.error()), "mend what it names");
}

}  // namespace

Findings lintPreferences(const std::string& bytes) {
  Findings findings;
  const std::optional<LocatedValue> root = readLocatedPropertyList(bytes, findings);
  if (!root) return findings;
  std::vector<SettingsInFile> found = settingsOf(*root, findings);
  for (SettingsInFile& settings : found) checkSettings(settings, findings);
  checkWithAgent(bytes, found, findings);
  return findings;
}

}  // namespace vorlu::ctl
