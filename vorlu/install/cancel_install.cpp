#include "vorlu/install/cancel_install.h"

#include "vorlu/install/install_window.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void cancelInstall(Vorlu& vorlu, const std::string& reason) {
  vorlu.progress.cancelText = reason;
  closeCancelledWindow(vorlu, 4);
  setCurrentRunType(vorlu, "N/A");
  vorlu.log("Informing user...");
  tellCancelled(vorlu, reason);
  runJamfInventory(vorlu);
  endRun(vorlu, 1);
}

}  // namespace vorlu
