#include "vorlu/install/server_call_limit.h"

#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::int64_t day = 86400;
constexpr std::int64_t callsADay = 10;

/// As the file stands now: another agent may have counted since this one first read it.
RunDataFile storedRunData(Vorlu& vorlu) {
  const Result<RunDataFile> file = loadRunData(vorlu.platform.files);
  return file ? *file : RunDataFile{};
}

void storeCount(Vorlu& vorlu, std::int64_t count) {
  vorlu.runData.serverCallCount = count;
  updateRunData(vorlu, RunDataSelector::serverCallCount);
}

}  // namespace

bool serverCallsExpired(const RunDataFile& file, std::int64_t now) {
  const std::int64_t reset = file.LastServerReset.value_or(0);
  return reset > now || reset <= now - day;
}

std::optional<std::int64_t> countWithOneMore(const RunDataFile& file) {
  const std::int64_t count = file.ServerCallCount.value_or(0);
  if (count >= callsADay) return std::nullopt;
  return count + 1;
}

bool takeServerCall(Vorlu& vorlu) {
  if (serverCallsExpired(storedRunData(vorlu), static_cast<std::int64_t>(vorlu.platform.clock.now()))) {
    vorlu.log("Resetting server call count...", silent);
    storeCount(vorlu, 0);
    updateRunData(vorlu, RunDataSelector::lastServerReset);
  }
  const auto count = countWithOneMore(storedRunData(vorlu));
  if (!count) {
    vorlu.log("Vorlu has reached the maximum allowed server calls for today");
    return false;
  }
  storeCount(vorlu, *count);
  return true;
}

}  // namespace vorlu
