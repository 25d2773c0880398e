#include "vorlu/install/install_job.h"

#include <fmt/format.h>

#include "vorlu/state/dialog_command.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void tick(InstallJob& job) {
  if (!job.anyProgress()) return;
  ++job.vorlu.progress.installProgress;
  writeDialogCommand(job.vorlu, fmt::format("progress: {}", job.vorlu.progress.installProgress));
}

void progressText(InstallJob& job, const std::string& text) {
  if (job.request.interactive) writeDialogCommand(job.vorlu, fmt::format("progresstext: {}", text));
}

}  // namespace vorlu
