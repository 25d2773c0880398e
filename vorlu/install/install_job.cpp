#include "vorlu/install/install_job.h"

#include <fmt/format.h>

#include "vorlu/install/progress_bar.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {

std::string InstallJob::searchRoot() const {
  return type != nullptr && type->isDiskImage() ? vorlu.progress.mountPoint : paths::output;
}

void tick(InstallJob& job) {
  if (!job.anyProgress()) return;
  stepBar(job.vorlu);
}

void progressText(InstallJob& job, const std::string& text) {
  if (job.request.interactive) writeDialogCommand(job.vorlu, fmt::format("progresstext: {}", text));
}

}  // namespace vorlu
