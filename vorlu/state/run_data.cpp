#include "vorlu/state/run_data.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <limits>
#include <variant>

#include "vorlu/state/end_run.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/random_number.h"
#include "vorlu/state/run_schedule.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

const Ownership fileOwnership{0640, "root", "wheel"};

struct Change {
  const char* key;
  std::variant<std::int64_t, bool, std::string> value;
};

/// The limit that a fresh count starts from: the resolved one, else the profile's.
std::string deferralLimit(Vorlu& vorlu) {
  if (!vorlu.runData.deferralLimitText.empty()) return vorlu.runData.deferralLimitText;
  return std::to_string(vorlu.preferences.scheduled().deferralConfiguration.specifyLimit);
}

std::vector<Change> changes(Vorlu& vorlu, RunDataSelector selector) {
  RunData& data = vorlu.runData;
  switch (selector) {
    case RunDataSelector::deferralUsed: {
      auto& left = data.deferCountRemaining();
      left = std::max(left.value_or(0), std::numeric_limits<std::int64_t>::min() + 1) - 1;
      return {{"DeferCount", std::to_string(*left)}, {"LastRun", data.now}, {"UserDeferred", true}};
    }
    case RunDataSelector::deferralNotApplicable:
      return {{"DeferCount", std::string("N/A")}, {"LastRun", data.now}, {"UserDeferred", true}};
    case RunDataSelector::resetDeferralsAndRun:
      return {{"DeferCount", deferralLimit(vorlu)}, {"LastRun", data.now}, {"UserDeferred", false}};
    case RunDataSelector::resetDeferrals:
      return {{"DeferCount", deferralLimit(vorlu)}, {"UserDeferred", false}};
    case RunDataSelector::lastCache:
      return {{"LastCache", data.now}};
    case RunDataSelector::lastKeyPrompt:
      return {{"LastKeyPrompt", data.now}};
    case RunDataSelector::nextUpdateAttempt:
      return {{"NextUpdateAttempt", data.now + hourlyInterval(randomBelow(vorlu.platform.security, hourlyDraws))}};
    case RunDataSelector::currentRunType:
      return {{"CurrentRunType", data.currentRunType}};
    case RunDataSelector::lastIconCheck:
      return {{"LastIconCheck", data.now}};
    case RunDataSelector::lastCompliant:
      return {{"LastCompliant", data.lastCompliantText}};
    case RunDataSelector::lastReport:
      return {{"LastReport", data.now}};
    case RunDataSelector::lastUser:
      return {{"LastUser", vorlu.platform.consoleUser.name()}};
    case RunDataSelector::secretsTimestamp:
      return {{"SecretsTimestamp", data.now}};
    case RunDataSelector::lastServerTimestamp:
      return {{"LastServerTimestamp", data.now}};
    case RunDataSelector::serverCallCount:
      return {{"ServerCallCount", data.serverCallCount}};
    case RunDataSelector::lastServerReset:
      return {{"LastServerReset", data.now}};
  }
  return {};
}

void logBoth(Vorlu& vorlu, const std::string& text) {
  vorlu.log(text);
  vorlu.log.logForJamf(text);
}

bool makeRunDirectory(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (files.exists(paths::run)) return true;
  vorlu.log("The run directory was not found. Attempting to create it...");
  files.createDirectory(paths::run, {0700, "root", "wheel"});
  files.setHidden(paths::run);
  vorlu.platform.clock.sleep(seconds(3));
  if (!files.exists(paths::run)) return false;
  vorlu.log("Successfully created the run directory");
  return true;
}

void writeFirstRunData(Vorlu& vorlu) {
  const std::string user = vorlu.platform.consoleUser.name();
  vorlu.log("Setting up the Deferrals Plist...");
  RunDataFile file;
  file.DeferCount = deferralLimit(vorlu);
  file.LastRun = 0;
  file.UserDeferred = false;
  file.LastCache = 0;
  file.LastKeyPrompt = 0;
  file.NextUpdateAttempt = 0;
  file.CurrentRunType = "N/A";
  file.LastIconCheck = 0;
  file.LastCompliant = "N/A";
  file.LastReport = 0;
  file.LastUser = user == "root" || user == "loginwindow" ? "" : user;
  file.SecretsTimestamp = 0;
  const Status written = vorlu.platform.files.writeAtomically(paths::runData, encodePropertyList(file), fileOwnership);
  if (!written) vorlu.log(written.error());
  vorlu.platform.files.setHidden(paths::runData);
}

/// Whether there is no run data. A disk that answers with an error doesn't say so: what the user has deferred may not
/// be written over.
bool isRunDataMissing(FileManager& files) {
  if (files.exists(paths::runData)) return false;
  const Result<std::string> bytes = files.read(paths::runData);
  return !bytes && bytes.failure().code == ENOENT;
}

}  // namespace

std::optional<std::int64_t> parseCount(const std::string& text) {
  const char* begin = text.data();
  const char* const end = begin + text.size();
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') ++begin;
  std::int64_t number = 0;
  const auto [stop, error] = std::from_chars(begin, end, number);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return number;
}

Result<RunDataFile> loadRunData(FileManager& files) {
  Result<std::string> bytes = files.read(paths::runData);
  if (!bytes) return bytes.failure();
  return decodePropertyList<RunDataFile>(*bytes);
}

std::optional<std::int64_t>& RunData::deferCountRemaining() {
  if (!deferCountRemaining_) deferCountRemaining_ = parseCount(kept(&RunDataFile::DeferCount));
  return *deferCountRemaining_;
}

void updateRunData(Vorlu& vorlu, RunDataSelector selector) {
  ensureRunData(vorlu);
  FileManager& files = vorlu.platform.files;
  const Result<std::string> bytes = files.read(paths::runData);
  Result<PropertyDictionary> dictionary =
      bytes ? PropertyDictionary::parse(*bytes) : Result<PropertyDictionary>(bytes.failure());
  if (!dictionary) {
    logBoth(vorlu, "Error: Failed to load run data file, could not update run data");
    return;
  }
  vorlu.runData.now = static_cast<std::int64_t>(vorlu.platform.clock.now());
  for (const Change& change : changes(vorlu, selector)) {
    std::visit([&](const auto& value) { dictionary->set(change.key, value); }, change.value);
    const std::string xml = dictionary->toXml();
    if (xml.empty() || !files.writeAtomically(paths::runData, xml, fileOwnership)) {
      logBoth(vorlu, "Error: Could not update run data");
    }
  }
  files.setHidden(paths::runData);
}

std::optional<std::string> createRunData(Vorlu& vorlu) {
  const std::string& contact = vorlu.site.supportContact();
  if (!makeRunDirectory(vorlu)) {
    vorlu.log(fmt::format("Error: The run directory could not be created. Please contact {} for assistance", contact));
    return "Error: The run directory could not be created. The update will be skipped. Please reinstall Vorlu";
  }
  FileManager& files = vorlu.platform.files;
  if (!isRunDataMissing(files)) return std::nullopt;
  vorlu.log("The run data plist was not found");
  writeFirstRunData(vorlu);
  vorlu.platform.clock.sleep(seconds(2));
  if (files.exists(paths::runData)) return std::nullopt;
  vorlu.log(fmt::format("Error: The run data plist could not be created. Please contact {} for assistance", contact));
  return "Error: The run data plist could not be created. The update will be skipped. Please reinstall Vorlu";
}

void ensureRunData(Vorlu& vorlu) {
  const std::optional<std::string> fault = createRunData(vorlu);
  if (!fault) return;
  vorlu.log.logForJamf(*fault);
  runJamfInventory(vorlu);
  endRunWithoutRunData(vorlu, 1);
}

}  // namespace vorlu
