#include "vorlu/state/dialog_command.h"

#include <fmt/format.h>

#include "vorlu/state/paths.h"
#include "vorlu/state/receipts.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void writeDialogCommand(Vorlu& vorlu, std::string_view command) {
  const Status written =
      vorlu.platform.files.append(paths::dialogCommandFile, fmt::format("{}\n", command), {0644, "root", "wheel"});
  if (!written) vorlu.log(fmt::format("Error writing to {}: {}", paths::dialogCommandFile, written.error()));
  if (command == "quit:") removeWatchReceipt(vorlu);
}

}  // namespace vorlu
