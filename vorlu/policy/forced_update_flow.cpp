#include "vorlu/policy/forced_update_flow.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "vorlu/policy/forced_update.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::vector<std::string> receiptFolder(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (!files.exists(paths::receipts)) return {};
  auto items = files.list(paths::receipts);
  if (items) return std::move(*items);
  vorlu.log(fmt::format("Error: Failed to list receipt directory items: {}", items.error()));
  return {};
}

}  // namespace

void announceForcedUpdates(Vorlu& vorlu) {
  vorlu.log("Starting the forced update check mechanism...");
  setCurrentRunType(vorlu, vorlu.modes.forcedMode ? "forcedUpdateInitTest" : "forcedUpdateInit");
}

void forcedUpdateFlow(Vorlu& vorlu) {
  vorlu.log("Checking for Apps marked for forced updates...");
  vorlu.platform.clock.sleep(std::chrono::seconds(3));
  const std::vector<std::string> items = receiptFolder(vorlu);
  if (items.empty()) {
    vorlu.log("No Apps have been marked for forced updates");
    if (isAlone(vorlu)) endCurrentTask(vorlu);  // a run that was killed after it had taken its receipt back left it
    setCurrentRunType(vorlu, "N/A");
    return;
  }
  if (!isAlone(vorlu)) {
    vorlu.log("Another Vorlu instance is at work. Forced updates have to wait for the next run", silent);
    return;
  }
  setCurrentRunType(vorlu, "forcedUpdateRequired");
  for (const std::string& item : items) {
    const auto app = markedApp(item);
    // The receipts before it may have taken hours, in which an administrator can take a mark back.
    if (app && vorlu.platform.files.exists(forcedReceiptPath(*app))) processForcedReceipt(vorlu, *app);
  }
  setCurrentRunType(vorlu, "N/A");
}

}  // namespace vorlu
