#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

/// Users and groups of the machine by name and by number. Answers are kept: reading the account files anew for every
/// file would cost more than the file.
class Accounts {
 public:
  /// The name, or the number as text where the machine knows none.
  std::string userName(uid_t id);
  std::string groupName(gid_t id);

  /// fchownat. Names that the machine lacks and changes it doesn't allow are skipped; otherwise the error number, 0 for
  /// success. With AT_EMPTY_PATH in `flags` and an empty `path` it works on `folder` itself.
  int giveAt(int folder, const char* path, const std::string& owner, const std::string& group, int flags);

  /// What a stat says, with the names of owner and group.
  FileInfo describe(const struct stat& status);

 private:
  std::optional<uid_t> userId(const std::string& name);
  std::optional<gid_t> groupId(const std::string& name);

  std::mutex mutex_;
  std::map<uid_t, std::string> userNames_;
  std::map<gid_t, std::string> groupNames_;
  std::map<std::string, std::optional<uid_t>> userIds_;
  std::map<std::string, std::optional<gid_t>> groupIds_;
};

}  // namespace vorlu
