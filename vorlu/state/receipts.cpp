#include "vorlu/state/receipts.h"

#include <fmt/format.h>

#include <chrono>

#include "vorlu/state/end_run.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// Removes `path` if it is there; a failure is logged as `message` with the error at its placeholder.
void removeIfThere(Vorlu& vorlu, const std::string& path, fmt::format_string<const std::string&> message) {
  FileManager& files = vorlu.platform.files;
  if (!files.exists(path)) return;
  const Status removed = files.remove(path);
  if (!removed) vorlu.log(fmt::format(message, removed.error()));
}

}  // namespace

void writeMissedUpdateReceipt(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (files.exists(paths::missedUpdate)) {
    vorlu.log("Update missed receipt already exists");
    return;
  }
  vorlu.log("Writing update missed receipt...", silent);
  const Status written = files.writeAtomically(paths::missedUpdate, "", {0644, "root", "wheel"});
  if (!written) {
    vorlu.log(fmt::format("Error: Unable to create the missed update receipt at path: {}/missedUpdate. Error: {}",
                          paths::run, written.error()));
    endRun(vorlu, 1);
  }
  runJamfInventory(vorlu);
  vorlu.platform.console.print("Please wait...");
  vorlu.log("Waiting to allow any new configuration profiles to install...");
  vorlu.platform.clock.sleep(std::chrono::seconds(40));
}

void removeMissedUpdateReceipt(Vorlu& vorlu) {
  if (!vorlu.platform.files.exists(paths::missedUpdate)) return;
  vorlu.log("Removing missed update receipt...");
  removeIfThere(vorlu, paths::missedUpdate, "Error attempting to remove update missed receipt: {}");
}

void removeForcedUpdateReceipt(Vorlu& vorlu, const std::string& app) {
  removeIfThere(vorlu, forcedReceiptPath(app), "Error removing the forced update receipts: {}");
  removeIfThere(vorlu, paths::currentTask, "Error removing the forced update receipts: {}");
}

void removeWatchReceipt(Vorlu& vorlu) {
  removeIfThere(vorlu, paths::watchReceipt, "Error removing watch receipt: {}");
}

void writeWatchReceipt(Vorlu& vorlu, const WatchReceiptData& receipt) {
  removeWatchReceipt(vorlu);
  vorlu.platform.clock.sleep(std::chrono::seconds(2));
  const Status written =
      vorlu.platform.files.writeAtomically(paths::watchReceipt, encodePropertyList(receipt), {0644, "root", "wheel"});
  if (!written) vorlu.log(fmt::format("Error writing watch receipt: {}", written.error()));
}

}  // namespace vorlu
