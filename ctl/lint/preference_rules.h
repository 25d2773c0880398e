#pragma once

#include "ctl/lint/record_lint.h"
#include "vorlu/state/preferences.h"

namespace vorlu::ctl {

/// The settings of one file under examination.
struct SettingsLint {
  const CustomPrefs& prefs;
  RecordLint lint;
};

/// Allowed and excluded apps, the switches, the key of reports.
void checkGeneral(SettingsLint& settings);
/// Patch day, frequency and deferrals.
void checkSchedule(SettingsLint& settings);
/// Days and times at which updates may run, of both sections.
void checkRunLimits(SettingsLint& settings);
/// Texts, sizes and icons of the prompts, and what keeps them away.
void checkPrompts(SettingsLint& settings);

}  // namespace vorlu::ctl
