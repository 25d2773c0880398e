#include "vorlu/install/remove_downloads.h"

#include <fmt/format.h>

#include "vorlu/detection/download_cache.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void emptyOutput(Vorlu& vorlu) {
  const auto entries = vorlu.platform.files.list(paths::output);
  if (!entries) {
    vorlu.log(fmt::format("Warning: Could not list archive output - {}", entries.error()));
    return;
  }
  for (const std::string& entry : *entries) removeFile(vorlu, paths::output + "/" + entry);
}

void removeDownloads(Vorlu& vorlu, const std::string& downloadPath) {
  vorlu.log("Removing downloads...");
  emptyOutput(vorlu);
  removeFile(vorlu, downloadPath);
}

}  // namespace vorlu
