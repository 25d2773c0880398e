#pragma once

#include <sys/stat.h>

#include <string>

#include "vorlu/platform/result.h"

namespace vorlu {

/// Copies one file or tree with links, modes, owners where allowed, times and extended attributes, and brings it to the
/// disk. Devices, pipes and sockets are refused. A failed copy leaves its parts to the caller.
class TreeCopy {
 public:
  /// From a name in one open folder to a new name in another; `shown` is the source's path in a failure.
  Status copy(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
              const std::string& shown);

 private:
  Status item(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
              const std::string& shown);
  Status file(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
              const std::string& shown);
  Status folder(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
                const std::string& shown);
  /// What a finished item gets from its source: attributes, owner, mode, times, and its way to the disk.
  Status finish(int from, int to, const struct stat& status, const std::string& shown);

  int flushed_ = 0;
  bool wholeVolume_ = false;
};

/// Removes a file, a link or a whole tree in an open folder; what isn't there counts as removed.
Status removeTree(int folder, const std::string& name, const std::string& shown);

}  // namespace vorlu
