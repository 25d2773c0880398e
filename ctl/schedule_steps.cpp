#include "ctl/schedule_steps.h"

#include <fmt/format.h>

#include "ctl/read_only_mac.h"
#include "vorlu/policy/deferral_window.h"
#include "vorlu/policy/deferrals.h"
#include "vorlu/policy/run_limits.h"
#include "vorlu/policy/scheme_gate.h"
#include "vorlu/policy/weekday.h"
#include "vorlu/prompts/update_prompt.h"
#include "vorlu/vorlu.h"

namespace vorlu::ctl {
namespace {

constexpr std::int64_t quarter = 900;  ///< seconds between two recurring runs
constexpr std::int64_t outlookSeconds = std::int64_t{35} * 24 * 3600;

const std::string scheduled = "ScheduledUpdates";

std::string key(const char* group, const char* name) {
  return fmt::format("{}.{}.{}", scheduled, group, name);
}

const char* sentence(PatchDayReason reason) {
  switch (reason) {
    case PatchDayReason::singleDone:
      return "today is the patch day, and the user has been asked or updated today already";
    case PatchDayReason::singleDue:
    case PatchDayReason::recurringDue:
      return "today is the patch day, and nothing has happened today yet";
    case PatchDayReason::recurringDeferred:
      return "today is the patch day, and the user has deferred today";
    case PatchDayReason::recurringUpdated:
      return "today is the patch day, and the user has updated today";
    case PatchDayReason::missedNotWanted:
      return "today is not the patch day, and a missed one isn't made up for";
    case PatchDayReason::neverRun:
      return "today is not the patch day, and no patch day has passed since the first run";
    case PatchDayReason::missedSingle:
      return "the last patch day was missed";
    case PatchDayReason::madeUpSingle:
      return "today is not the patch day, and the user has been asked or updated since the last one";
    case PatchDayReason::deferredSince:
      return "the user has deferred since the last patch day";
    case PatchDayReason::updatedSince:
      return "today is not the patch day, and no deferral of it is open";
  }
  return "";
}

std::string sentence(FrequencyReason reason, std::string_view period) {
  switch (reason) {
    case FrequencyReason::noActivity:
      return fmt::format("nothing has happened in the last {}", period);
    case FrequencyReason::deferredSingle:
      return fmt::format("the user has deferred in the last {} and is asked once in that time", period);
    case FrequencyReason::deferredRecurring:
      return fmt::format("the user has deferred in the last {} and is asked again after each deferral", period);
    case FrequencyReason::updated:
      return fmt::format("updates were installed, none were due, or deferrals began afresh in the last {}", period);
  }
  return "";
}

/// A verdict as a step; a deferral is asked for its end.
ExplainedStep schemeDecision(Vorlu& vorlu, SchemeVerdict verdict, bool patchDay, std::string decidedBy,
                             std::string detail) {
  if (verdict != SchemeVerdict::askDeferralWindow)
    return decision("scheme", verdict == SchemeVerdict::goOn, std::move(decidedBy), std::move(detail));
  const RunPrefs& prefs = vorlu.preferences.scheduled().runFrequency;
  const std::int64_t end = deferralEnd(vorlu.runData.kept(&RunDataFile::LastRun),
                                       patchDay ? prefs.patchDayDeferralWindow : prefs.deferralWindow);
  const bool elapsed = checkDeferralWindow(vorlu, patchDay);
  return decision(
      "scheme", elapsed, key("runFrequency", patchDay ? "patchDayDeferralWindow" : "deferralWindow"),
      fmt::format("{}; the deferral {} {}", detail, elapsed ? "ended" : "ends", momentText(vorlu.platform.clock, end)));
}

ExplainedStep frequencyStep(Vorlu& vorlu, const RunPrefs& prefs) {
  const FrequencyOption* option = findFrequencyOption(prefs.frequencyOption);
  if (option == nullptr)
    return decision("scheme", true, key("runFrequency", "frequencyOption"),
                    fmt::format("\"{}\" is no frequency, so none is applied", prefs.frequencyOption));
  const UpdateActivity activity = activityAtStart(vorlu);
  const FrequencyReason reason =
      frequencyDecision(FrequencyCalculation(vorlu.platform.clock).frequencyCutoffTime(prefs.frequencyOption),
                        promptModeOf(prefs.frequencyElapsedMode), activity);
  std::string detail = fmt::format("{} (last: {})", sentence(reason, option->period),
                                   momentText(vorlu.platform.clock, activity.lastRun));
  return schemeDecision(vorlu, verdictOf(reason), false, key("runFrequency", "frequencyOption"), std::move(detail));
}

ExplainedStep patchDayStep(Vorlu& vorlu, const RunPrefs& prefs) {
  const UpdateActivity activity = activityAtStart(vorlu);
  const PatchDayReason reason = patchDayDecision(FrequencyCalculation(vorlu.platform.clock), prefs, activity);
  const char* decidedBy = reason == PatchDayReason::missedNotWanted ? "missedUpdatePrompt" : "patchDay";
  std::string detail = fmt::format("{} (patch day: {}, last: {})", sentence(reason), weekdayName(prefs.patchDay),
                                   momentText(vorlu.platform.clock, activity.lastRun));
  return schemeDecision(vorlu, verdictOf(reason), true, key("runFrequency", decidedBy), std::move(detail));
}

ExplainedStep dayStep(const RunLimits& limits, const std::string& group, int today,
                      std::optional<std::int64_t> patchDay) {
  const std::string day = weekdayName(today);
  std::string name = day;
  name[0] = static_cast<char>(name[0] - 'A' + 'a');
  const RunDay verdict = runDayVerdict(limits.day(today).allowed, patchDay == today);
  const char* detail = verdict == RunDay::notLimited ? "{} is a day for updates"
                       : verdict == RunDay::limited  ? "{} is no day for updates"
                                                     : "{} is no day for updates, but the patch day";
  return decision("run day", verdict != RunDay::limited, fmt::format("{}.{}", group, name),
                  fmt::format(fmt::runtime(detail), day));
}

ExplainedStep timeStep(Clock& clock, const RunLimits& limits, const std::string& group) {
  const CalendarFields now = clock.fields(clock.now(), Zone::local);
  const DayLimits today = limits.day(now.weekday);
  const RunTime verdict = runTimeVerdict(today, now.hour * 100 + now.minute);
  const std::string window = fmt::format("{} to {}", today.startTime.value_or(""), today.endTime.value_or(""));
  const auto detail = [&]() -> std::string {
    switch (verdict) {
      case RunTime::notLimited:
        return fmt::format("{} has no run window", weekdayName(now.weekday));
      case RunTime::invalid:
        return fmt::format("the run window {} is no window and is ignored", window);
      case RunTime::sameTimes:
        return fmt::format("the run window {} begins when it ends and is ignored", window);
      case RunTime::inside:
        return fmt::format("{:02}:{:02} is inside the run window {}", now.hour, now.minute, window);
      case RunTime::outside:
        break;
    }
    return fmt::format("{:02}:{:02} is outside the run window {}", now.hour, now.minute, window);
  };
  return decision("run time", verdict != RunTime::outside, group, detail());
}

/// What a check found, with the key that asks for it.
std::pair<const char*, const char*> keyAndWords(AcceptableUse use) {
  switch (use) {
    case AcceptableUse::foregroundApp:
      return {"acceptableAppBundleIDs", "one of the named applications is in front"};
    case AcceptableUse::assertion:
      return {"acceptableAppAssertions", "one of the named applications keeps the Mac awake"};
    case AcceptableUse::camera:
      return {"acceptableCameraUsage", "the camera is in use"};
    case AcceptableUse::doNotDisturb:
      return {"acceptableDNDMode", "Do Not Disturb is on"};
    case AcceptableUse::screenSharing:
      break;
  }
  return {"acceptableScreenSharing", "the screen is shared"};
}

std::string promptSentence(PromptChoice choice, const std::optional<std::int64_t>& left, std::int64_t grace) {
  switch (choice) {
    case PromptChoice::initial:
      return left ? fmt::format("the user is asked and may defer (deferrals left: {})", *left)
                  : "the user is asked and may defer as often as he likes";
    case PromptChoice::graceCountUsedUp:
      return fmt::format("no deferral is left: the user has {} minutes to save his work", grace);
    case PromptChoice::graceDeferralsDisabled:
    case PromptChoice::graceOnDemand:
      return fmt::format("deferrals are disabled: the user has {} minutes to save his work", grace);
    case PromptChoice::none:
      break;
  }
  return "the option is unknown: open applications are quit and updated without a question";
}

}  // namespace

ExplainedStep schemeStep(Vorlu& vorlu) {
  const RunPrefs& prefs = vorlu.preferences.scheduled().runFrequency;
  switch (schemeOf(prefs.runType)) {
    case Scheme::frequency:
      return frequencyStep(vorlu, prefs);
    case Scheme::patchDay:
      return patchDayStep(vorlu, prefs);
    case Scheme::unknown:
      break;
  }
  return decision("scheme", true, key("runFrequency", "runType"),
                  fmt::format("\"{}\" is no scheme, so none is applied", prefs.runType));
}

Steps limitSteps(Clock& clock, const RunLimits& limits, const std::string& section,
                 std::optional<std::int64_t> patchDay) {
  const std::string group = section + ".runLimitations";
  return {dayStep(limits, group, clock.fields(clock.now(), Zone::local).weekday, patchDay),
          timeStep(clock, limits, group)};
}

Steps timeGates(Vorlu& vorlu) {
  const ScheduledUpdatesPrefs& prefs = vorlu.preferences.scheduled();
  const bool hasPatchDay = schemeOf(prefs.runFrequency.runType) == Scheme::patchDay;
  Steps steps{schemeStep(vorlu)};
  for (ExplainedStep& step : limitSteps(vorlu.platform.clock, prefs.runLimitations, scheduled,
                                        hasPatchDay ? std::optional(prefs.runFrequency.patchDay) : std::nullopt))
    steps.push_back(std::move(step));
  return steps;
}

std::optional<std::int64_t> nextOpenMoment(ReadOnlyMac& mac, const Site& site) {
  const auto from = static_cast<std::int64_t>(mac.clock.now());
  std::optional<std::int64_t> open;
  std::optional<Vorlu> run;
  for (std::int64_t moment = from; !open && moment <= from + outlookSeconds;
       moment = (moment / quarter + 1) * quarter) {
    mac.clock.moveTo(static_cast<Seconds>(moment));
    if (!run) run.emplace(mac.platform(), site);
    if (schemeStep(*run).verdict == stops) continue;
    prepareDeferralState(*run);  // a changed mode counts as an update activity, which the next run meets
    if (firstStop(timeGates(*run)) == nullptr) open = moment;
    run.reset();
  }
  mac.clock.release();
  return open;
}

PromptOutlook promptOutlook(Vorlu& vorlu) {
  const ScheduledUpdatesPrefs& prefs = vorlu.preferences.scheduled();
  const DeferralMode mode = deferralModeOf(prefs.deferralConfiguration.deferralOption);
  prepareDeferralState(vorlu);
  PromptOutlook outlook;
  outlook.choice = promptChoice(mode, Trigger::run, vorlu.runData.deferCountRemaining());
  if (mode == DeferralMode::limited) outlook.left = vorlu.runData.deferCountRemaining();
  outlook.step = {"deferrals", tells, key("deferralConfiguration", "deferralOption"),
                  promptSentence(outlook.choice, outlook.left, usableGraceMinutes(prefs.gracePeriodMinutes))};
  return outlook;
}

ExplainedStep acceptableUseStep(Vorlu& vorlu, const AcceptableUseKeys& keys, const std::string& section) {
  const auto use = checkAcceptableUse(vorlu, keys, scheduledAcceptableUseLines);
  if (!use) return decision("acceptable use", true, section, "nothing that may not be interrupted is going on");
  const auto [keyName, words] = keyAndWords(*use);
  return decision("acceptable use", false, fmt::format("{}.{}", section, keyName), words);
}

}  // namespace vorlu::ctl
