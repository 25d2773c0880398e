#include "vorlu/state/run_schedule.h"

namespace vorlu {

std::int64_t hourlyInterval(std::int64_t draw) {
  return 3600 + 60 * (3 + draw);
}

HourlyStep hourlyStepAt(std::int64_t now, bool enabled, std::int64_t nextAttempt) {
  if (!enabled) return HourlyStep::disabled;
  return nextAttempt >= now ? HourlyStep::early : HourlyStep::due;
}

ReportStep reportStepAt(std::int64_t now, bool worked, std::int64_t reportDue) {
  if (worked) return ReportStep::reportAndInventory;
  return reportDue < now ? ReportStep::report : ReportStep::none;
}

}  // namespace vorlu
