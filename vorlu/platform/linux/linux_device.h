#pragma once

#include "vorlu/platform/device.h"
#include "vorlu/platform/linux/linux_host.h"

namespace vorlu {

/// The host file's computer. Without one it has no serial number, system version 0.0.0 and the machine's own name.
class LinuxDevice : public Device {
 public:
  explicit LinuxDevice(LinuxHost& host) : host_(host) {}

  std::optional<int> cpuType() override { return host_.facts()->cpuType; }
  std::string osVersion() override { return host_.facts()->osVersion.value_or("0.0.0"); }
  std::optional<std::string> serialNumber() override { return host_.facts()->serialNumber; }
  std::string computerName() override;
  std::optional<std::string> productDescription() override { return host_.facts()->productDescription; }

 private:
  LinuxHost& host_;
};

}  // namespace vorlu
