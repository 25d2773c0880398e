#include "vorlu/reporting/report.h"

#include <optional>
#include <string>

#include "vorlu/detection/update_check.h"
#include "vorlu/install/network_quality.h"
#include "vorlu/reporting/computer_facts.h"
#include "vorlu/reporting/report_data.h"
#include "vorlu/reporting/report_lists.h"
#include "vorlu/reporting/submit_report.h"
#include "vorlu/reporting/update_facts.h"
#include "vorlu/server/server_texts.h"
#include "vorlu/state/agent_version.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/format_date.h"
#include "vorlu/state/run_schedule.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::string dateText(Vorlu& vorlu, Seconds when) {
  return formatDate(vorlu.platform.clock, when, DateForm::fullStamp);
}

std::optional<RunDataFile> storedRunData(Vorlu& vorlu) {
  Result<RunDataFile> file = loadRunData(vorlu.platform.files);
  return file ? std::optional(std::move(*file)) : std::nullopt;
}

void collectComputer(Vorlu& vorlu, SystemTools& tools, ComputerRecord& computer) {
  vorlu.log("Collecting computer information. Please wait...");
  Device& device = vorlu.platform.device;
  computer.customerName = decryptString(vorlu, SiteText::customerName);
  computer.serialNumber = device.serialNumber().value_or(unknownFact);
  computer.computerName = computerName(device);
  computer.modelNumber = modelNumber(device);
  computer.architecture = architecture(tools);
  computer.osVersion = device.osVersion();
  computer.filevaultEnabled = isFileVaultEnabled(tools);
  computer.gatekeeperEnabled = isGatekeeperEnabled(tools);
  computer.sipEnabled = isSipEnabled(tools);
  computer.lastCheckin = dateText(vorlu, vorlu.platform.clock.now());
  computer.vorluVersion = agentVersion;
  if (computer.modelNumber == unknownFact) computer.modelNumber = modelName(tools);
}

/// A login window, or nobody at all, leaves the last user standing.
void rememberUser(Vorlu& vorlu) {
  const std::string user = vorlu.platform.consoleUser.name();
  if (user == "root" || user == "loginwindow" || user == "Unknown") return;
  updateRunData(vorlu, RunDataSelector::lastUser);
}

void collectPrompts(Vorlu& vorlu, SystemTools& tools, ComputerRecord& computer) {
  vorlu.log("Collecting update prompt information...");
  if (vorlu.updates.compliantThisRun) recordCompliance(vorlu);
  rememberUser(vorlu);
  const std::optional<RunDataFile> stored = storedRunData(vorlu);
  const RunDataFile runData = stored.value_or(RunDataFile{});
  const GeneralOptionPrefs& general = vorlu.preferences.general();
  computer.lastUser = runData.LastUser.value_or(unknownFact);
  computer.lastUserFullName = readFullName(tools, runData.LastUser.value_or(""));
  computer.selfUpdatesEnabled = general.autoUpdate;
  computer.backgroundUpdatesEnabled = general.hourlyCheck;
  computer.promptsEnabled = general.updatePrompts;

  const std::int64_t lastRun = runData.LastRun.value_or(0);
  computer.lastPrompt = lastRun > 0 ? dateText(vorlu, static_cast<Seconds>(lastRun)) : unknownFact;
  const auto next = general.updatePrompts
                        ? nextPromptTime(vorlu.platform.clock, vorlu.preferences.scheduled().runFrequency, lastRun)
                        : std::nullopt;
  computer.nextPrompt = next ? dateText(vorlu, static_cast<Seconds>(*next)) : unknownFact;
  computer.lastRunStatus = lastRunStatus(stored, vorlu.updates);
  computer.lastCompliant = runData.LastCompliant.value_or("N/A");
  computer.deferralsRemaining = runData.DeferCount.value_or(unknownFact);
}

void collectDeferrals(Vorlu& vorlu, ComputerRecord& computer) {
  vorlu.log("Collecting update deferral information...");
  const DeferralPrefs& prefs = vorlu.preferences.scheduled().deferralConfiguration;
  computer.deferralsAllowed = areDeferralsAllowed(prefs);
  computer.deferralLimit = deferralLimitShown(prefs);
}

void collectLists(Vorlu& vorlu, ComputerRecord& computer) {
  vorlu.log("Collecting local Application inventory information...");
  computer.AppInventory = reportedApps(vorlu.updates, vorlu.platform.files);
  vorlu.log("Collecting error information...");
  const ErrorStruct record = readErrorRecord(vorlu.platform.files);
  computer.ErrorLog = reportedErrors(record);
  vorlu.log("Collecting warning information...");
  computer.WarningLog = reportedWarnings(record);
}

}  // namespace

ReportData collectReport(Vorlu& vorlu) {
  SystemTools tools(vorlu.platform.processes, vorlu.log);
  ComputerRecord computer;
  collectComputer(vorlu, tools, computer);
  recordNetworkQuality(vorlu);
  collectPrompts(vorlu, tools, computer);
  collectDeferrals(vorlu, computer);
  collectLists(vorlu, computer);
  return {std::move(computer)};
}

void buildAndSubmitReport(Vorlu& vorlu) {
  vorlu.log("Initialising reporting mechanism...");
  if (!vorlu.modes.reportMode) setCurrentRunType(vorlu, "ReportingAuto");
  ReportData report = collectReport(vorlu);
  vorlu.log("Attempting to submit report information...");
  report.ComputerRecord->diskCapacity = readDiskSpace(vorlu.platform.files, true);
  report.ComputerRecord->freeDiskSpace = readDiskSpace(vorlu.platform.files, false);
  // Before the submission, which can end the run when the key material is lost and the server can't be reached.
  updateRunData(vorlu, RunDataSelector::lastReport);
  handOverReport(vorlu, report);
  if (vorlu.modes.reportMode) setCurrentRunType(vorlu, "N/A");
}

void reportStep(Vorlu& vorlu, std::int64_t reportDue) {
  const bool worked = vorlu.updates.hourlyCheckRan || vorlu.updates.updatesRan;
  const ReportStep step = reportStepAt(vorlu.runData.now, worked, reportDue);
  if (step != ReportStep::none) buildAndSubmitReport(vorlu);
  if (step == ReportStep::reportAndInventory) runJamfInventory(vorlu);
}

}  // namespace vorlu
