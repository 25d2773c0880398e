#include "vorlu/state/end_run.h"

#include "vorlu/state/paths.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
void endRun(Vorlu& vorlu, int status) {
  setCurrentRunType(vorlu, "N/A");
  vorlu.log("Exiting...");
  exitProcess(status);
}

void endRunWithoutRunData(Vorlu& vorlu, int status) {
  vorlu.log("Exiting...");
  exitProcess(status);
}

void exitProcess(int status) {
  throw RunEnded{status};
}

void fatalStop(Vorlu& vorlu, const std::string& text) {
  fatalStop(vorlu, text, text);
}

void fatalStop(Vorlu& vorlu, const std::string& text, const std::string& jamfText) {
  vorlu.log(text);
  vorlu.log.logForJamf(jamfText);
  runJamfInventory(vorlu);
  endRun(vorlu, 1);
}

void runJamfInventory(Vorlu& vorlu) {
  if (!vorlu.platform.files.exists(paths::jamf)) return;
  vorlu.log("Running Jamf Pro inventory update...");
  vorlu.platform.processes.run(shellCommand("/usr/local/jamf/bin/jamf recon"));
}

}  // namespace vorlu
