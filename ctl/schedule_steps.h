#pragma once

#include <optional>

#include "ctl/explained_step.h"
#include "vorlu/policy/acceptable_use.h"
#include "vorlu/policy/scheduled_rules.h"

namespace vorlu {
struct Vorlu;
class Site;
}  // namespace vorlu

namespace vorlu::ctl {

class ReadOnlyMac;

/// Whether the scheme lets a recurring run ask the user at the clock's moment: the patch day or the frequency, with the
/// end of a deferral. Changes nothing.
ExplainedStep schemeStep(Vorlu& vorlu);

/// The run limitations of the clock's moment: the day, then the time. `section` names their preferences, and `patchDay`
/// is the weekday that no day limitation counts on.
Steps limitSteps(Clock& clock, const RunLimits& limits, const std::string& section,
                 std::optional<std::int64_t> patchDay);

/// All that hangs on the time alone, in the order in which a recurring run asks it.
Steps timeGates(Vorlu& vorlu);

/// The first moment from the clock's on at which a recurring run would get through, by runs a quarter of an hour apart;
/// nothing within five weeks. What those runs would store is kept in the Mac's memory.
std::optional<std::int64_t> nextOpenMoment(ReadOnlyMac& mac, const Site& site);

/// How a user is asked, and what is left of his deferrals.
struct PromptOutlook {
  PromptChoice choice = PromptChoice::none;
  std::optional<std::int64_t> left;  ///< nothing where none are counted
  ExplainedStep step;
};
/// Sets up the deferral state as a run does, on a Mac that stores nothing.
PromptOutlook promptOutlook(Vorlu& vorlu);

/// Whether the user may be interrupted now, by the keys of a section of the preferences.
ExplainedStep acceptableUseStep(Vorlu& vorlu, const AcceptableUseKeys& keys, const std::string& section);

}  // namespace vorlu::ctl
