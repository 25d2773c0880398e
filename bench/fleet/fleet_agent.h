#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "bench/fleet/fleet_clock.h"
#include "vorlu/policy/frequency_calculation.h"
#include "vorlu/state/preferences.h"

namespace vorlu::fleet {

/// What an agent asks its servers for.
enum class Role { reachability, timestamp, secrets, catalog, manifest, icon, download, report };
inline constexpr std::size_t roleCount = 8;

/// A new version in the catalog.
struct Publication {
  std::int64_t when = 0;   ///< seconds since the epoch
  double installed = 1;    ///< share of the Macs that have the app
  double inUse = 0;        ///< share of those that have it open until they are asked
  double megabytes = 100;  ///< of its installer
  bool newIcon = false;
};

struct ServerHistory {
  std::vector<Publication> publications = {};          ///< in order of time
  std::vector<std::int64_t> certificateChanges = {0};  ///< in order of time
  std::int64_t lastCertificateChange(std::int64_t now) const;
};

/// The profile's keys that decide about requests.
struct FleetProfile {
  bool hourlyCheck = true;
  bool updatePrompts = true;
  bool autoUpdate = true;
  RunPrefs runFrequency = {};
};

/// What differs from Mac to Mac and from run to run.
struct Chance {
  std::function<std::int64_t()> hourlyDraw;   ///< 0 to hourlyDraws - 1
  std::function<bool(double share)> isOneOf;  ///< whether this Mac belongs to a share
  std::function<bool()> userDefers = [] { return false; };
};

/// One Mac's agent: what its run data file keeps, and the recurring run as a sequence of requests. When something is
/// due is decided by the agent's own rules; installing, prompting and reporting take the times given here.
class FleetAgent {
 public:
  /// `app` is what an icon or a download belongs to, null for the other roles.
  using Send = std::function<void(std::int64_t when, Role role, const Publication* app)>;

  FleetAgent(const FleetProfile& profile, const ServerHistory& server, Chance chance);
  /// Key material, catalog and icons are there, as on a Mac that has run before; the times are its last ones.
  void assumeSettled(std::int64_t lastCheck, std::int64_t nextCheck);

  /// `vorlu --update run` at the clock's time. The clock stands at its end afterwards.
  void recurringRun(FleetClock& clock, const Send& send);

  std::int64_t measuring = 15;   ///< seconds that the report's network measurement takes
  std::int64_t answering = 120;  ///< seconds until the user has answered a prompt

 private:
  enum class AppState { none, outdated, waiting, current };  ///< waiting: cached, but in use
  struct Run;
  void startUp(Run& run);
  void hourlyStep(Run& run);
  bool scheduledStep(Run& run);
  void reportStep(Run& run, std::int64_t reportDue);
  void pass(Run& run);
  bool passesScheme(Run& run);
  bool anyWaiting() const;

  const FleetProfile& profile_;
  const ServerHistory& server_;
  Chance chance_;
  std::vector<AppState> apps_;  ///< by publication
  std::vector<bool> hasIcon_;   ///< by publication
  bool hasKeys_ = false;
  bool hasCopy_ = false;
  std::int64_t catalogOf_ = 0;  ///< when the local copy was fetched
  // As in the run data file.
  std::int64_t nextUpdateAttempt_ = 0;
  std::int64_t lastReport_ = 0;
  std::int64_t secretsTimestamp_ = 0;
  std::int64_t lastServerTimestamp_ = 0;
  UpdateActivity activity_;
};

}  // namespace vorlu::fleet
