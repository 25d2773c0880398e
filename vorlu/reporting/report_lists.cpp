#include "vorlu/reporting/report_lists.h"

#include <optional>
#include <string>
#include <utility>

#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"

namespace vorlu {
namespace {

/// A file's record; an empty one when it can't be read or decoded.
template <class T>
T readRecord(FileManager& files, const std::string& path) {
  Result<std::string> text = files.read(path);
  if (!text) return {};
  Result<T> record = decodeJson<T>(std::move(*text));
  return record ? std::move(*record) : T{};
}

}  // namespace

std::vector<AppRecord> reportedApps(const UpdateState& updates, FileManager& files) {
  const bool sawAll = updates.pendingFrom == Walk::full || updates.pendingFrom == Walk::refresh;
  const std::vector<ApplicationInventory> inventory =
      sawAll ? updates.appInventoryList
             : readRecord<AppInventory>(files, paths::appInventory)
                   .appInventory.value_or(std::vector<ApplicationInventory>{});
  std::vector<AppRecord> apps;
  apps.reserve(inventory.size());
  for (const ApplicationInventory& app : inventory) {
    apps.push_back({app.appName, app.appIdentifier, app.installedPath, app.installedVersion, app.updateCached,
                    app.updatesAllowed});
  }
  return apps;
}

ErrorStruct readErrorRecord(FileManager& files) {
  return readRecord<ErrorStruct>(files, paths::errors);
}

std::vector<ErrorLog> reportedErrors(const ErrorStruct& record) {
  std::vector<ErrorLog> errors;
  if (!record.vorluErrors) return errors;
  for (const VorluErrors& error : *record.vorluErrors) errors.push_back({error.timeStamp, error.message});
  return errors;
}

std::vector<WarningLog> reportedWarnings(const ErrorStruct& record) {
  std::vector<WarningLog> warnings;
  if (!record.vorluWarnings) return warnings;
  for (const VorluWarnings& warning : *record.vorluWarnings) warnings.push_back({warning.timeStamp, warning.message});
  return warnings;
}

}  // namespace vorlu
