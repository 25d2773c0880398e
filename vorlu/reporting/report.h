#pragma once

#include <cstdint>

namespace vorlu {

struct ReportData;
struct Vorlu;

/// Everything that the report tells. Measures the network anew and brings LastUser and LastCompliant up to date. Logs
/// its steps; what can't be found out fails nothing.
ReportData collectReport(Vorlu& vorlu);

/// Collects and submits the report. Whatever becomes of it, LastReport is stamped: the next one waits an hour.
void buildAndSubmitReport(Vorlu& vorlu);

/// The report of the recurring run. After an hourly check or updates Jamf Pro's inventory follows it; else it waits
/// until `reportDue` has passed: LastReport as the run found it at its start, and the interval.
void reportStep(Vorlu& vorlu, std::int64_t reportDue);

}  // namespace vorlu
