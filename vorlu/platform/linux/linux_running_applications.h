#pragma once

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/linux/linux_host.h"
#include "vorlu/platform/running_applications.h"

namespace vorlu {

/// Processes whose program lies in a bundle's "Contents/MacOS" count as running applications. Which of them are active
/// is the host file's to say.
class LinuxRunningApplications : public RunningApplications {
 public:
  LinuxRunningApplications(RootFolder root, LinuxHost& host, FileManager& files)
      : root_(std::move(root)), host_(host), files_(files) {}

  bool isRunning(const std::string& bundleIdentifier) override;
  std::vector<std::string> active() override { return host_.facts()->activeApplications; }

 private:
  std::string identifierOf(const std::string& bundle);

  RootFolder root_;
  LinuxHost& host_;
  FileManager& files_;
};

}  // namespace vorlu
