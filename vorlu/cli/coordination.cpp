#include "vorlu/cli/coordination.h"

#include <fmt/format.h>

#include "vorlu/state/end_run.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {

Coordination coordinateInstances(Vorlu& vorlu) {
  const Duplicates others = findDuplicates(vorlu);
  if (!others.searched) {
    vorlu.log(fmt::format("Error: Could not search for other instances of Vorlu - {}", others.error));
    return Coordination::searchFailed;
  }
  noteStanding(vorlu, others);
  if (others.pids.empty()) return Coordination::goOn;
  if (vorlu.modes.updateMode || vorlu.modes.forcedMode) {
    Console& console = vorlu.platform.console;
    console.print(fmt::format("Another instance of Vorlu is already being run by root under proccess ID: {}",
                              others.pids.front()));
    console.print("Exiting...");
    exitProcess(0);
  }
  return Coordination::goOn;
}

}  // namespace vorlu
