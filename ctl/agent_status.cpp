#include "ctl/agent_status.h"

#include <fmt/format.h>

#include <cerrno>

#include "ctl/explained_step.h"
#include "ctl/read_only_mac.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/installed_version.h"
#include "vorlu/reporting/update_facts.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/preferences_path.h"
#include "vorlu/state/property_list.h"
#include "vorlu/vorlu.h"

namespace vorlu::ctl {
namespace {

const std::string agentProgram = "/usr/local/bin/vorlu";
constexpr std::int64_t nanoseconds = 1'000'000'000;

/// A status under way.
struct Reading {
  Vorlu& vorlu;
  AgentStatus status = {};

  FileManager& files() { return vorlu.platform.files; }
  std::optional<std::string> stamp(std::int64_t moment) { return momentStamp(vorlu.platform.clock, moment); }
  std::optional<std::string> changed(const std::string& path) {
    const auto info = files().info(path);
    return info ? stamp(info->modified / nanoseconds) : std::nullopt;
  }
  /// The text of a file of the state; one that is missing says nothing.
  std::optional<std::string> text(const std::string& path) {
    auto read = files().read(path);
    if (read) return std::move(*read);
    if (read.failure().code != ENOENT) status.unreadable.push_back(read.error());
    return std::nullopt;
  }
  template <class T, class Decode>
  std::optional<T> decoded(const std::string& path, Decode decode) {
    auto bytes = text(path);
    if (!bytes) return std::nullopt;
    Result<T> record = decode(std::move(*bytes));
    if (record) return std::move(*record);
    status.unreadable.push_back(fmt::format("{}: {}", path, record.error()));
    return std::nullopt;
  }
};

void readVersions(Reading& at) {
  Command ask;
  ask.program = agentProgram;
  ask.arguments = {"--version"};
  const ProcessResult answer = at.vorlu.platform.processes.run(ask);
  const std::string line = trimmed(answer.output);
  if (answer.status == 0) at.status.agentVersion = line.substr(line.rfind(' ') + 1);
  VersionSource source;
  source.method = "pkgReceipt";
  source.receiptPath = paths::promptComponentReceipt;
  const std::string dialog = readInstalledVersion(at.vorlu, source);
  if (dialog != "Unknown") at.status.dialogVersion = dialog;
}

void readRunData(Reading& at) {
  const auto file = at.decoded<RunDataFile>(
      paths::runData, [](const std::string& bytes) { return decodePropertyList<RunDataFile>(bytes); });
  if (!file) return;
  AgentStatus& status = at.status;
  if (file->CurrentRunType.value_or("N/A") != "N/A") status.run = file->CurrentRunType;
  status.nextCheck = at.stamp(file->NextUpdateAttempt.value_or(0));
  status.lastPrompt = at.stamp(file->LastRun.value_or(0));
  status.lastReport = at.stamp(file->LastReport.value_or(0));
  status.lastCompliant = file->LastCompliant;
  status.deferralsLeft = file->DeferCount;
  status.userDeferred = file->UserDeferred;
  const RunPrefs& prefs = at.vorlu.preferences.scheduled().runFrequency;
  if (at.vorlu.preferences.general().updatePrompts)
    status.nextPrompt = at.stamp(nextPromptTime(at.vorlu.platform.clock, prefs, file->LastRun.value_or(0)).value_or(0));
}

void readInventory(Reading& at) {
  const auto inventory = at.decoded<AppInventory>(paths::appInventory, decodeJson<AppInventory>);
  if (!inventory || !inventory->appInventory) return;
  at.status.pending.emplace();
  for (const ApplicationInventory& app : *inventory->appInventory)
    if (app.updateRequired && app.updatesAllowed)
      at.status.pending->push_back({app.appName, app.installedVersion, app.latestVersion, app.updateCached});
}

void readErrors(Reading& at) {
  const auto record = at.decoded<ErrorStruct>(paths::errors, decodeJson<ErrorStruct>);
  if (!record) return;
  if (record->vorluErrors && !record->vorluErrors->empty()) at.status.lastError = record->vorluErrors->back();
  if (record->vorluWarnings && !record->vorluWarnings->empty()) at.status.lastWarning = record->vorluWarnings->back();
}

void readMarks(Reading& at) {
  const auto items = at.files().list(paths::receipts);
  if (!items) return;
  for (const std::string& item : *items)
    if (const auto app = markedApp(item)) at.status.forced.push_back(*app);
}

std::string line(const char* label, const std::optional<std::string>& value, const char* ifAbsent) {
  return fmt::format("{:<18}{}\n", label, value.value_or(ifAbsent));
}

std::string line(const char* label, const std::optional<VorluErrors>& value) {
  if (!value) return line(label, std::optional<std::string>(), "none");
  return line(label, fmt::format("{}: {}", value->timeStamp.value_or("?"), value->message.value_or("")), "");
}

std::string pendingText(const AgentStatus& status) {
  if (!status.pending) return line("Pending updates", std::optional<std::string>(), "unknown");
  std::string text = line("Pending updates", std::to_string(status.pending->size()), "");
  for (const PendingUpdate& update : *status.pending)
    text += fmt::format("  {} {} -> {}{}\n", update.app, update.installedVersion, update.latestVersion,
                        update.cached ? ", its installer is in the cache" : "");
  return text;
}

}  // namespace

AgentStatus readStatus(Platform& mac, const Site& site) {
  ReadOnlyMac readOnly(mac);
  readOnly.processes.allow(agentProgram);
  Vorlu vorlu(readOnly.platform(), site);
  Reading at{vorlu};
  at.status.preferences = preferencesPath(vorlu.platform);
  at.status.lastActivity = at.changed(paths::log);
  at.status.catalogFetched = at.changed(paths::offlineData);
  readVersions(at);
  readRunData(at);
  readInventory(at);
  readErrors(at);
  readMarks(at);
  return std::move(at.status);
}

std::string toText(const AgentStatus& status) {
  std::string text = line("Agent", status.agentVersion, "not installed");
  text += line("Dialog", status.dialogVersion, "not installed");
  text += line("Preferences", status.preferences, "none, all keys are at their default");
  text += line("At work", status.run, "no");
  text += line("Last activity", status.lastActivity, "unknown");
  text += line("Catalog fetched", status.catalogFetched, "unknown");
  text += line("Next hourly check", status.nextCheck, "with the next run");
  text += line("Last prompt", status.lastPrompt, "unknown");
  text += line("Next prompt", status.nextPrompt, "unknown");
  text += line("Last report", status.lastReport, "unknown");
  text += line("Last compliant", status.lastCompliant, "unknown");
  text +=
      line("Deferrals left",
           status.deferralsLeft ? std::optional(*status.deferralsLeft +
                                                (status.userDeferred.value_or(false) ? ", the user has deferred" : ""))
                                : std::nullopt,
           "unknown");
  text += pendingText(status);
  for (const std::string& app : status.forced) text += line("Forced update", app, "");
  text += line("Last error", status.lastError);
  text += line("Last warning", status.lastWarning);
  for (const std::string& reason : status.unreadable) text += line("Not readable", reason, "");
  return text;
}

}  // namespace vorlu::ctl
