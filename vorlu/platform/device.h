#pragma once

#include <optional>
#include <string>

namespace vorlu {

/// The computer itself. Stands for sysctlbyname, the IOPlatformExpertDevice registry entry, NSProcessInfo and NSHost.
class Device {
 public:
  virtual ~Device() = default;

  /// Low byte of "hw.cputype": 7 Intel, 12 Apple Silicon; nothing when it can't be read.
  virtual std::optional<int> cpuType() = 0;
  /// "{major}.{minor}.{patch}".
  virtual std::string osVersion() = 0;
  /// IOPlatformSerialNumber; nothing when it can't be read.
  virtual std::optional<std::string> serialNumber() = 0;
  /// localizedName of the current host; empty when it has none.
  virtual std::string computerName() = 0;
  /// Property "product-description" of "IOService:/AppleARMPE/product"; nothing when it can't be read, as on Intel.
  virtual std::optional<std::string> productDescription() = 0;
};

}  // namespace vorlu
