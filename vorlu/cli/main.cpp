#include <string>
#include <vector>

#include "vorlu/cli/entry.h"
#include "vorlu/platform/linux/linux_platform.h"
#include "vorlu/platform/linux/linux_processes.h"

int main(int argc, char** argv) {
  vorlu::installSignalHandling();
  vorlu::LinuxPlatform platform;
  return vorlu::runVorlu(platform.platform(), vorlu::sealedSite, std::vector<std::string>(argv + 1, argv + argc));
}
