#include "vorlu/install/cancel_install.h"

#include <fmt/format.h>

#include "vorlu/install/progress_bar.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/end_run.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr int cancelTicks = 4;
constexpr std::chrono::milliseconds tickGap{500};
constexpr std::chrono::seconds readingTime{1};

}  // namespace

void cancelInstall(Vorlu& vorlu, const std::string& reason) {
  Clock& clock = vorlu.platform.clock;
  vorlu.progress.cancelText = reason;
  writeDialogCommand(vorlu, "progress: 2");
  writeDialogCommand(vorlu, fmt::format("progresstext: Installing {}...", vorlu.currentApp.appName));
  for (int n = 0; n < cancelTicks; ++n) {
    if (n > 0) clock.sleep(tickGap);
    stepBar(vorlu);
  }
  writeDialogCommand(vorlu, "progresstext: Install cancelled ❌");
  clock.sleep(readingTime);
  writeDialogCommand(vorlu, "progress: complete");
  writeDialogCommand(vorlu, "quit:");
  clock.sleep(readingTime);
  runJamfInventory(vorlu);
  endRun(vorlu, 1);
}

}  // namespace vorlu
