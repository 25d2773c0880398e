#include "vorlu/policy/deferrals.h"

#include <fmt/format.h>

#include "vorlu/state/end_run.h"
#include "vorlu/state/format_date.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr int daysOfGrace = 15;
constexpr Seconds secondsPerDay = 86400;
constexpr const char* countWithoutRunData = "2";

const DeferralPrefs& preferences(Vorlu& vorlu) {
  return vorlu.preferences.scheduled().deferralConfiguration;
}

DeferralMode configuredMode(Vorlu& vorlu) {
  return deferralModeOf(preferences(vorlu).deferralOption);
}

std::optional<RunDataFile> readRunData(Vorlu& vorlu) {
  Result<RunDataFile> file = loadRunData(vorlu.platform.files);
  return file ? std::optional(std::move(*file)) : std::nullopt;
}

/// Brings the stored count in line with the mode.
void applySetUp(Vorlu& vorlu, DeferralSetUp setUp) {
  switch (setUp) {
    case DeferralSetUp::keep:
      break;
    case DeferralSetUp::unreadable:
      vorlu.log("Could not read the deferral count");
      updateRunData(vorlu, RunDataSelector::resetDeferralsAndRun);
      break;
    case DeferralSetUp::notLimitedBefore:
      vorlu.log("An update deferral limit was not previously specified");
      updateRunData(vorlu, RunDataSelector::resetDeferrals);
      break;
    case DeferralSetUp::switchesFromLimit:
      vorlu.log("Switching deferral mode...");
      updateRunData(vorlu, RunDataSelector::resetDeferralsAndRun);
      break;
  }
}

void logConfiguration(Vorlu& vorlu, DeferralMode mode) {
  switch (mode) {
    case DeferralMode::limited:
      vorlu.log(fmt::format("A deferral limit of {} has been configured for any pending updates.",
                            preferences(vorlu).specifyLimit));
      vorlu.log(fmt::format("Remaining update deferrals: {}", vorlu.runData.deferCountRemaining().value_or(0)));
      break;
    case DeferralMode::unlimited:
      vorlu.log("Deferrals have been configured with no Deferral Limit for any pending updates.");
      break;
    case DeferralMode::disabled:
      vorlu.log("Deferrals have been disabled for any pending updates.");
      break;
    case DeferralMode::other:
      break;
  }
}

/// The same time of day so many days ago; nothing when the calendar can't tell.
std::optional<Seconds> daysAgo(Clock& clock, int days) {
  const Seconds now = clock.now();
  const CalendarFields time = clock.fields(now, Zone::local);
  // Noon is on the right day, however the clock was changed in between.
  const auto noon = clock.hourOfDay(now, 12, Zone::local);
  const auto hour = noon ? clock.hourOfDay(*noon - days * secondsPerDay, time.hour, Zone::local) : std::nullopt;
  return hour ? std::optional(*hour + time.minute * 60 + time.second) : std::nullopt;
}

/// A computer whose user puts updates off stays compliant for a while, but not for ever.
void dateComplianceBack(Vorlu& vorlu) {
  const auto date = daysAgo(vorlu.platform.clock, daysOfGrace);
  if (!date) {
    vorlu.log("Warning: Could not update last compliant timestamp after update deferral");
    return;
  }
  vorlu.log(fmt::format("Setting last compliant date: {}", describeDate(static_cast<std::int64_t>(*date))));
  vorlu.runData.lastCompliantText = formatDate(vorlu.platform.clock, *date, DateForm::fullStamp);
  updateRunData(vorlu, RunDataSelector::lastCompliant);
}

[[noreturn]] void endAfterPrompt(Vorlu& vorlu) {
  runJamfInventory(vorlu);
  vorlu.log("Exiting.");
  exitProcess(0);
}

}  // namespace

DeferralMode deferralModeOf(std::string_view option) {
  if (option == "specifyDeferralLimit") return DeferralMode::limited;
  if (option == "disableDeferralLimit") return DeferralMode::unlimited;
  return option == "disableDeferrals" ? DeferralMode::disabled : DeferralMode::other;
}

DeferralSetUp deferralSetUp(DeferralMode mode, const std::optional<RunDataFile>& file) {
  const std::optional<std::string> count = file ? file->DeferCount : std::nullopt;
  switch (mode) {
    case DeferralMode::limited:
      if (!count) return DeferralSetUp::unreadable;
      if (*count == "N/A" || count->empty()) return DeferralSetUp::notLimitedBefore;
      return parseCount(*count) ? DeferralSetUp::keep : DeferralSetUp::unreadable;
    case DeferralMode::unlimited:
    case DeferralMode::disabled:
      return count && *count != "N/A" ? DeferralSetUp::switchesFromLimit : DeferralSetUp::keep;
    case DeferralMode::other:
      break;
  }
  return DeferralSetUp::keep;
}

void resolveDeferralLimit(Vorlu& vorlu) {
  const DeferralMode mode = configuredMode(vorlu);
  if (mode == DeferralMode::limited) {
    vorlu.runData.deferralLimitText = std::to_string(preferences(vorlu).specifyLimit);
  } else if (mode != DeferralMode::other) {
    vorlu.runData.deferralLimitText = "N/A";
  }
}

void prepareDeferralState(Vorlu& vorlu) {
  const DeferralMode mode = configuredMode(vorlu);
  resolveDeferralLimit(vorlu);
  applySetUp(vorlu, deferralSetUp(mode, readRunData(vorlu)));
  const auto file = readRunData(vorlu);
  const std::string count = file ? file->DeferCount.value_or(countWithoutRunData) : countWithoutRunData;
  auto& left = vorlu.runData.deferCountRemaining();
  left = parseCount(count);
  // A reset that couldn't be stored counts in this run all the same.
  if (!left) left = parseCount(vorlu.runData.deferralLimitText);
  logConfiguration(vorlu, mode);
}

void recordDeferral(Vorlu& vorlu) {
  vorlu.log("Defer selected");
  setCurrentRunType(vorlu, "N/A");
  if (configuredMode(vorlu) == DeferralMode::limited) {
    updateRunData(vorlu, RunDataSelector::deferralUsed);
    vorlu.log.logForJamf(fmt::format("User deferred the update. The defer count is now {}",
                                     vorlu.runData.deferCountRemaining().value_or(0)));
  } else {
    vorlu.log.logForJamf("User deferred the update (No deferral limit is configured)");
    updateRunData(vorlu, RunDataSelector::deferralNotApplicable);
  }
  dateComplianceBack(vorlu);
  endAfterPrompt(vorlu);
}

void recordAbnormalPromptExit(Vorlu& vorlu, const std::string& exitText, PromptDeath death) {
  vorlu.log(fmt::format("Error: The update prompt quit unexpectedly. Exit code: {}", exitText));
  setCurrentRunType(vorlu, "N/A");
  const bool counts = death == PromptDeath::countsAsDeferral;
  if (counts && configuredMode(vorlu) == DeferralMode::limited) {
    updateRunData(vorlu, RunDataSelector::deferralUsed);
    vorlu.log.logForJamf(fmt::format("The update prompt quit unexpectedly with exit code {}. The defer count is now {}",
                                     exitText, vorlu.runData.deferCountRemaining().value_or(0)));
  } else {
    if (counts) updateRunData(vorlu, RunDataSelector::deferralNotApplicable);
    vorlu.log.logForJamf(fmt::format("The update prompt quit unexpectedly with exit code {}.", exitText));
  }
  endAfterPrompt(vorlu);
}

}  // namespace vorlu
