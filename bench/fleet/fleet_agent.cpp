#include "bench/fleet/fleet_agent.h"

#include <algorithm>
#include <utility>

#include "vorlu/policy/deferral_window.h"
#include "vorlu/server/catalog_window.h"
#include "vorlu/server/reachability.h"
#include "vorlu/state/run_schedule.h"

namespace vorlu::fleet {
namespace {

using std::chrono::seconds;

constexpr seconds forcedPause{3};  // the forced step's, before it looks for marked apps
constexpr seconds iconPause{1};    // after each icon
constexpr seconds schemePause{1};

}  // namespace

std::int64_t ServerHistory::lastCertificateChange(std::int64_t now) const {
  const auto next = std::upper_bound(certificateChanges.begin(), certificateChanges.end(), now);
  return next == certificateChanges.begin() ? 0 : *(next - 1);
}

/// One run: what lives as long as the process.
struct FleetAgent::Run {
  FleetClock& clock;
  const Send& send;
  bool passDone = false;
  bool worked = false;

  void request(Role role, const Publication* app = nullptr) { send(clock.time(), role, app); }
};

FleetAgent::FleetAgent(const FleetProfile& profile, const ServerHistory& server, Chance chance)
    : profile_(profile), server_(server), chance_(std::move(chance)) {
  for (const Publication& publication : server.publications) {
    const bool installed = chance_.isOneOf(publication.installed);
    apps_.push_back(installed ? AppState::outdated : AppState::none);
    hasIcon_.push_back(!publication.newIcon);
  }
}

void FleetAgent::assumeSettled(std::int64_t lastCheck, std::int64_t nextCheck) {
  hasKeys_ = hasCopy_ = true;
  catalogOf_ = lastServerTimestamp_ = lastReport_ = secretsTimestamp_ = activity_.lastRun = lastCheck;
  nextUpdateAttempt_ = nextCheck;
}

void FleetAgent::recurringRun(FleetClock& clock, const Send& send) {
  Run run{clock, send};
  const std::int64_t reportDue = lastReport_ + reportInterval;
  startUp(run);
  clock.sleep(forcedPause);
  hourlyStep(run);
  if (profile_.updatePrompts && !scheduledStep(run)) return;
  reportStep(run, reportDue);
}

void FleetAgent::startUp(Run& run) {
  const auto fetchKeys = [&] {
    run.request(Role::secrets);
    secretsTimestamp_ = run.clock.time();
    hasKeys_ = true;
  };
  if (!hasKeys_) fetchKeys();
  run.request(Role::reachability);
  run.request(Role::timestamp);
  if (isRefreshDue(secretsTimestamp_, server_.lastCertificateChange(run.clock.time()))) fetchKeys();
  run.request(Role::reachability);
}

void FleetAgent::hourlyStep(Run& run) {
  if (hourlyStepAt(run.clock.time(), profile_.hourlyCheck, nextUpdateAttempt_) != HourlyStep::due) return;
  pass(run);
  if (profile_.autoUpdate) {
    run.request(Role::manifest);  // for the agent
    run.request(Role::manifest);  // for its component
  }
  for (std::size_t app = 0; app < hasIcon_.size(); ++app) {
    const Publication& publication = server_.publications[app];
    if (hasIcon_[app] || publication.when > catalogOf_) continue;
    run.request(Role::icon, &publication);
    run.clock.sleep(iconPause);
    hasIcon_[app] = true;
  }
  run.worked = true;
  nextUpdateAttempt_ = run.clock.time() + hourlyInterval(chance_.hourlyDraw());
}

/// Fetches the catalog where it is due, and the installers of the outdated apps that it tells of.
void FleetAgent::pass(Run& run) {
  run.passDone = true;
  if (!hasCopy_ || isCatalogDue(run.clock, lastServerTimestamp_, run.clock.now())) {
    if (hasCopy_) lastServerTimestamp_ = run.clock.time();  // the window is stamped only where there is a choice
    run.request(Role::catalog);
    catalogOf_ = run.clock.time();
    hasCopy_ = true;
  }
  for (std::size_t app = 0; app < apps_.size(); ++app) {
    const Publication& publication = server_.publications[app];
    if (apps_[app] != AppState::outdated || publication.when > catalogOf_) continue;
    run.request(Role::download, &publication);
    apps_[app] = chance_.isOneOf(publication.inUse) ? AppState::waiting : AppState::current;
  }
}

bool FleetAgent::anyWaiting() const {
  return std::find(apps_.begin(), apps_.end(), AppState::waiting) != apps_.end();
}

bool FleetAgent::passesScheme(Run& run) {
  const RunPrefs& prefs = profile_.runFrequency;
  const FrequencyCalculation times(run.clock);
  SchemeVerdict verdict = SchemeVerdict::goOn;
  std::int64_t window = prefs.deferralWindow;
  if (schemeOf(prefs.runType) == Scheme::frequency && findFrequencyOption(prefs.frequencyOption) != nullptr) {
    run.clock.sleep(schemePause);
    verdict = verdictOf(frequencyDecision(times, prefs, activity_));
  } else if (schemeOf(prefs.runType) == Scheme::patchDay) {
    verdict = verdictOf(patchDayDecision(times, prefs, activity_));
    window = prefs.patchDayDeferralWindow;
  }
  if (verdict == SchemeVerdict::askDeferralWindow)
    return isDeferralElapsed(deferralEnd(activity_.lastRun, window), run.clock.time());
  return verdict == SchemeVerdict::goOn;
}

/// False when the user's deferral ended the run.
bool FleetAgent::scheduledStep(Run& run) {
  if (!run.passDone) pass(run);
  if (!passesScheme(run)) return true;
  if (!anyWaiting()) {
    activity_.userDeferred = false;
    if (schemeOf(profile_.runFrequency.runType) != Scheme::frequency) activity_.lastRun = run.clock.time();
    return true;
  }
  run.clock.sleep(seconds(answering));
  activity_ = {run.clock.time(), chance_.userDefers()};
  if (activity_.userDeferred) return false;
  std::replace(apps_.begin(), apps_.end(), AppState::waiting, AppState::current);
  run.worked = true;
  return true;
}

void FleetAgent::reportStep(Run& run, std::int64_t reportDue) {
  if (reportStepAt(run.clock.time(), run.worked, reportDue) == ReportStep::none) return;
  run.clock.sleep(seconds(measuring));
  lastReport_ = run.clock.time();
  run.request(Role::report);
}

}  // namespace vorlu::fleet
