#include "vorlu/install/recovery.h"

#include <string>
#include <vector>

#include "vorlu/install/attached_images.h"
#include "vorlu/install/placement.h"
#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/run_type.h"
#include "vorlu/state/stale_files.h"
#include "vorlu/state/work_notes.h"
#include "vorlu/vorlu.h"

namespace vorlu {

namespace {

/// Whoever answered them would be heard by nobody. Beside an agent at work they may be that one's.
void closeOrphanedPrompts(Vorlu& vorlu) {
  const std::vector<WorkNote> notes = notesOfEndedRuns(vorlu, promptNote);
  if (notes.empty() || !isAlone(vorlu)) return;
  vorlu.log("Closing the prompts of a run that has ended", silent);
  killPrompts(vorlu);
  for (const WorkNote& note : notes) static_cast<void>(note.remove(vorlu.platform.files));
}

}  // namespace

void recoverKilledRuns(Vorlu& vorlu) {
  recoverPlacement(vorlu);
  recoverImages(vorlu);
  closeOrphanedPrompts(vorlu);
  for (const std::string& folder : {paths::run, paths::receipts, std::string("/Library/Keychains")})
    removeStaleFiles(vorlu, folder);
}

}  // namespace vorlu
