#include "vorlu/platform/linux/linux_clock.h"

#include "vorlu/platform/linux/termination.h"

namespace vorlu {

Seconds LinuxClock::now() {
  const Seconds real = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  const auto facts = host_.facts();
  return facts->clock ? facts->clock->mac + (real - facts->clock->real) * facts->clock->rate : real;
}

void LinuxClock::sleep(std::chrono::milliseconds duration) {
  const auto facts = host_.facts();
  const double rate = facts->clock ? facts->clock->rate : 1;
  sleepUnlessTerminated(
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double, std::milli>(duration) / rate));
}

}  // namespace vorlu
