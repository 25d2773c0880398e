#pragma once

#include "vorlu/platform/cameras.h"
#include "vorlu/platform/linux/linux_host.h"

namespace vorlu {

/// The host file's cameras.
class LinuxCameras : public Cameras {
 public:
  explicit LinuxCameras(LinuxHost& host) : host_(host) {}

  std::vector<Camera> list() override { return host_.facts()->cameras; }

 private:
  LinuxHost& host_;
};

}  // namespace vorlu
