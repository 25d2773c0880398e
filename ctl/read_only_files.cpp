#include "ctl/read_only_files.h"

#include "vorlu/state/paths.h"

namespace vorlu::ctl {
namespace {

/// What the log writes to: its file, the line for Jamf Pro and the record for the report.
bool isLog(const std::string& path) {
  return path == paths::log || path == paths::jamfLog || path == paths::errors;
}

}  // namespace

Result<std::string> ReadOnlyFiles::read(const std::string& path, std::size_t cap) {
  const auto kept = kept_.find(path);
  return kept == kept_.end() ? files_.read(path, cap) : Result<std::string>(kept->second);
}

Status ReadOnlyFiles::writeAtomically(const std::string& path, std::string_view data, const Ownership& /*ownership*/) {
  if (isLog(path)) return success();
  if (path != paths::runData) throw ChangeRefused(path);
  kept_[path] = data;
  return success();
}

Status ReadOnlyFiles::append(const std::string& path, std::string_view /*data*/, const Ownership& /*ownership*/) {
  if (!isLog(path)) throw ChangeRefused(path);
  return success();
}

Status ReadOnlyFiles::createDirectory(const std::string& path, const Ownership& /*ownership*/) {
  // Folders of the files above; the others are made for something that is refused itself.
  if (!paths::jamfLog.starts_with(path + "/") && !paths::runData.starts_with(path + "/")) throw ChangeRefused(path);
  kept_.try_emplace(path);
  return success();
}

void ReadOnlyFiles::setHidden(const std::string& path) {
  if (!isLog(path) && !kept_.contains(path)) throw ChangeRefused(path);
}

}  // namespace vorlu::ctl
