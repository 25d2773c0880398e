#pragma once

#include <string>
#include <vector>

namespace vorlu {

/// Stands for NSRunningApplication.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;
  /// Whether runningApplicationsWithBundleIdentifier: gives a list that isn't empty.
  virtual bool isRunning(const std::string& bundleIdentifier) = 0;
  /// Bundle identifiers of the applications that are active, the one in front first.
  virtual std::vector<std::string> active() = 0;
};

}  // namespace vorlu
