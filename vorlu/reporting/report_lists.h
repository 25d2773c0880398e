#pragma once

#include <vector>

#include "vorlu/detection/update_state.h"
#include "vorlu/platform/file_manager.h"
#include "vorlu/reporting/report_data.h"
#include "vorlu/state/error_record.h"

namespace vorlu {

/// The applications that this run's last look at the whole catalog found, or, without one, those of the inventory file.
std::vector<AppRecord> reportedApps(const UpdateState& updates, FileManager& files);

/// Run/Errors.json; empty when it can't be read.
ErrorStruct readErrorRecord(FileManager& files);
std::vector<ErrorLog> reportedErrors(const ErrorStruct& record);
std::vector<WarningLog> reportedWarnings(const ErrorStruct& record);

}  // namespace vorlu
