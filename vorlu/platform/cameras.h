#pragma once

#include <cstdint>
#include <vector>

namespace vorlu {

struct Camera {
  std::uint32_t id = 0;
  bool inUse = false;
};

/// Stands for CoreMediaIO's device list and kCMIODevicePropertyDeviceIsRunningSomewhere.
class Cameras {
 public:
  virtual ~Cameras() = default;
  virtual std::vector<Camera> list() = 0;
};

}  // namespace vorlu
