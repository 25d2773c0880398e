#include "vorlu/platform/linux/linux_device.h"

#include <sys/utsname.h>

namespace vorlu {

std::string LinuxDevice::computerName() {
  if (auto name = host_.facts()->computerName) return *name;
  utsname machine{};
  return ::uname(&machine) == 0 ? machine.nodename : "";
}

}  // namespace vorlu
