#include "vorlu/install/remove_downloads.h"

#include <fmt/format.h>

#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void removeItem(Vorlu& vorlu, const std::string& path) {
  const Status removed = vorlu.platform.files.remove(path);
  if (removed) return;
  vorlu.log(fmt::format("Could not remove file at path: {}", path));
  vorlu.log(fmt::format("Error information: {}", removed.error()));
}

void emptyOutput(Vorlu& vorlu) {
  const auto entries = vorlu.platform.files.list(paths::output);
  if (!entries) {
    vorlu.log(fmt::format("Warning: Could not list archive output - {}", entries.error()));
    return;
  }
  for (const std::string& entry : *entries) removeItem(vorlu, paths::output + "/" + entry);
}

void removeDownloads(Vorlu& vorlu, const std::string& downloadPath) {
  vorlu.log("Removing downloads...");
  emptyOutput(vorlu);
  removeItem(vorlu, downloadPath);
}

}  // namespace vorlu
