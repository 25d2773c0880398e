#pragma once

#include <string>

#include "vorlu/platform/linux/descriptor.h"

namespace vorlu {

/// Holds a folder of the machine against other processes, and other holders in this one, until the end of the scope. It
/// binds only those who ask. A folder that can't be had within ten seconds, or isn't there, is worked in unheld: a
/// holder needs milliseconds, and one that was stopped must not hold up everybody.
class FolderLock {
 public:
  explicit FolderLock(const std::string& hostFolder);

 private:
  Descriptor folder_;
};

}  // namespace vorlu
