#include "vorlu/install/progress_bar.h"

#include <fmt/format.h>

#include "vorlu/state/dialog_command.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void stepBar(Vorlu& vorlu, int steps) {
  setBar(vorlu, vorlu.progress.installProgress + steps);
}

void setBar(Vorlu& vorlu, int value) {
  vorlu.progress.installProgress = value;
  writeDialogCommand(vorlu, fmt::format("progress: {}", value));
}

}  // namespace vorlu
