#include "vorlu/state/run_type.h"

#include <fmt/format.h>

#include "vorlu/state/duplicates.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/receipts.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

void storeRunType(Vorlu& vorlu, const std::string& type) {
  vorlu.runData.currentRunType = type;
  updateRunData(vorlu, RunDataSelector::currentRunType);
}

/// A receipt whose process lives is that process's own affair.
void removeDeadWatchReceipt(Vorlu& vorlu) {
  const Result<std::string> bytes = vorlu.platform.files.read(paths::watchReceipt);
  if (!bytes) return;
  const auto receipt = decodePropertyList<WatchReceiptData>(*bytes);
  const auto parent = receipt ? parseCount(receipt->parentPID.value_or("")) : std::nullopt;
  if (!parent || !vorlu.platform.processes.isAlive(static_cast<pid_t>(*parent))) removeWatchReceipt(vorlu);
}

}  // namespace

void clearTracesOfCrash(Vorlu& vorlu) {
  if (const std::string type = readRunType(vorlu); type != "N/A") {
    vorlu.log(fmt::format("Resetting the run type {} of a run that has ended", type), silent);
    storeRunType(vorlu, "N/A");
  }
  removeDeadWatchReceipt(vorlu);
}

void noteAlone(Vorlu& vorlu) {
  // A run type that stands there may be this run's own.
  const bool wasAlone = vorlu.modes.standing == Standing::alone;
  vorlu.modes.standing = Standing::alone;
  if (!wasAlone) clearTracesOfCrash(vorlu);
}

void noteBeside(Vorlu& vorlu) {
  vorlu.modes.standing = Standing::beside;
}

bool isAlone(Vorlu& vorlu) {
  if (vorlu.modes.standing == Standing::unknown) {
    // Nobody has decided yet which of several agents works.
    findDuplicatesByName(vorlu).none() ? noteAlone(vorlu) : noteBeside(vorlu);
  }
  return vorlu.modes.standing == Standing::alone;
}

std::string readRunType(Vorlu& vorlu) {
  const Result<RunDataFile> file = loadRunData(vorlu.platform.files);
  const std::string type = file ? file->CurrentRunType.value_or("") : "";
  return type.empty() ? "N/A" : type;
}

void setCurrentRunType(Vorlu& vorlu, const std::string& type) {
  if (isAlone(vorlu)) storeRunType(vorlu, type);
}

}  // namespace vorlu
