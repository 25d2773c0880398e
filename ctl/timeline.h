#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ctl/rehearsal_plan.h"
#include "vorlu/platform/result.h"
#include "vorlu/state/record.h"

namespace vorlu {
class Site;
}

namespace vorlu::ctl {

/// One thing that happens in a rehearsal.
struct TimelineEntry {
  std::string time;                           ///< "Mon 2026-11-23 09:00"
  std::string event;                          ///< "released", "asked", "grace", "updated" or "notAsked"
  std::optional<std::int64_t> deferralsLeft;  ///< before the answer
  std::optional<std::string> answer;          ///< of the user, as `UserAnswer` names them
  std::string detail;
  static constexpr auto fields() {
    using T = TimelineEntry;
    return std::array{field<&T::time>("time"), field<&T::event>("event"), field<&T::deferralsLeft>("deferralsLeft"),
                      field<&T::answer>("answer"), field<&T::detail>("detail")};
  }
};

/// Rehearses the plan's days: the agent's own scheduled flow runs each quarter of an hour on a Mac with a virtual clock
/// and a throw-away folder. A reason why the user isn't asked is told when it changes. A failure says what is wrong
/// with the preferences.
Result<std::vector<TimelineEntry>> rehearse(const RehearsalPlan& plan, const Site& site);

}  // namespace vorlu::ctl
