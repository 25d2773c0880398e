#include <cstdlib>
#include <string>
#include <vector>

#include "vorlu/cli/entry.h"
#include "vorlu/platform/linux/linux_platform.h"
#include "vorlu/platform/linux/termination.h"
#include "vorlu/vorlu.h"

int main(int argc, char** argv) {
  vorlu::installSignalHandling();
  vorlu::LinuxPlatform platform;
  const vorlu::Site site(vorlu::sealedSite, platform.platform().security);
  vorlu::Vorlu run(platform.platform(), site);
  const int status = vorlu::runVorlu(run, std::vector<std::string>(argv + 1, argv + argc));
  // Flows have released what they held; to return a whole catalog's memory text by text would only take time.
  std::_Exit(status);
}
