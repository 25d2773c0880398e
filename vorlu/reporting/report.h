#pragma once

#include <cstdint>

namespace vorlu {

struct ReportData;
struct Vorlu;

/// How long after a report the next is due, in seconds.
inline constexpr std::int64_t reportInterval = 3600;

/// Everything that the report tells. Measures the network anew and brings LastUser and LastCompliant up to date. Logs
/// its steps; what can't be found out fails nothing.
ReportData collectReport(Vorlu& vorlu);

/// Collects and submits the report. Whatever becomes of it, LastReport is stamped: the next one waits an hour.
void buildAndSubmitReport(Vorlu& vorlu);

/// What the recurring run has to tell at its end.
struct RecurringRun {
  bool hourlyRan = false;      ///< the hourly check ran
  bool updatesRan = false;     ///< the scheduled flow got as far as installing
  std::int64_t reportDue = 0;  ///< seconds since the epoch: LastReport, as the run found it, and the interval
};

/// The report of the recurring run. After work Jamf Pro's inventory follows it; without, it waits until it is due.
void reportStep(Vorlu& vorlu, const RecurringRun& run);

}  // namespace vorlu
