#include "vorlu/state/run_type.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <string_view>

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

/// What a killed run left behind would make other agents wait for it.
void clearTracesOfCrash(Vorlu& vorlu) {
  const Result<RunDataFile> file = loadRunData(vorlu.platform.files);
  if (file && file->CurrentRunType.value_or("N/A") != "N/A") {
    vorlu.log(fmt::format("Resetting the run type {} of a run that has ended", *file->CurrentRunType), silent);
    storeRunType(vorlu, "N/A");
  }
  const Result<std::string> bytes = vorlu.platform.files.read(paths::watchReceipt);
  if (!bytes) return;
  const auto receipt = decodePropertyList<WatchReceiptData>(*bytes);
  const auto parent = receipt ? parseCount(receipt->parentPID.value_or("")) : std::nullopt;
  if (!parent || !vorlu.platform.processes.isAlive(static_cast<pid_t>(*parent))) removeWatchReceipt(vorlu);
}

}  // namespace

Duplicates findDuplicates(Vorlu& vorlu) {
  Processes& processes = vorlu.platform.processes;
  Command search;
  search.program = "/usr/bin/pgrep";
  search.arguments = {"-x", "vorlu"};
  const ProcessResult result = processes.run(search);
  Duplicates found;
  // pgrep answers 1 when nothing matched
  found.searched = result.started && !result.timedOut && (result.status == 0 || result.status == 1);
  if (!found.searched) {
    found.error = result.started ? fmt::format("{} ended with {}", search.program, result.status) : result.error;
    return found;
  }
  std::string_view rest = result.output;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    pid_t pid = 0;
    const auto [stop, error] = std::from_chars(line.data(), line.data() + line.size(), pid);
    if (error != std::errc{} || pid == processes.ownPid() || pid == processes.parentPid()) continue;
    found.pids.push_back(pid);
  }
  return found;
}

void noteStanding(Vorlu& vorlu, const Duplicates& others) {
  const bool alone = others.searched && others.pids.empty();
  const bool wasAlone = vorlu.modes.standing == Standing::alone;  // a run type that stands there is this run's
  vorlu.modes.standing = alone ? Standing::alone : Standing::beside;
  if (alone && !wasAlone) clearTracesOfCrash(vorlu);
}

bool isAlone(Vorlu& vorlu) {
  if (vorlu.modes.standing == Standing::unknown) noteStanding(vorlu, findDuplicates(vorlu));
  return vorlu.modes.standing == Standing::alone;
}

void setCurrentRunType(Vorlu& vorlu, const std::string& type) {
  if (isAlone(vorlu)) storeRunType(vorlu, type);
}

}  // namespace vorlu
