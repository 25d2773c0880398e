#include "vorlu/state/dialog_command.h"

#include <fmt/format.h>

#include "vorlu/state/paths.h"
#include "vorlu/state/receipts.h"
#include "vorlu/state/work_notes.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void writeDialogCommand(Vorlu& vorlu, std::string_view command) {
  std::string line(command);
  for (char& c : line)
    if (c == '\n' || c == '\r') c = ' ';  // what follows would be a command of its own
  const Status written = vorlu.platform.files.append(paths::dialogCommandFile, line + "\n", {0644, "root", "wheel"});
  if (!written) vorlu.log(fmt::format("Error writing to {}: {}", paths::dialogCommandFile, written.error()));
  if (command != "quit:") return;
  removeWatchReceipt(vorlu);
  forgetPrompt(vorlu);
}

void notePrompt(Vorlu& vorlu) {
  // Without it the prompt is shown all the same.
  static_cast<void>(WorkNote{promptNote, vorlu.platform.processes.ownPid()}.write(vorlu.platform.files));
}

void forgetPrompt(Vorlu& vorlu) {
  static_cast<void>(WorkNote{promptNote, vorlu.platform.processes.ownPid()}.remove(vorlu.platform.files));
}

}  // namespace vorlu
