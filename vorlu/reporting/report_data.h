#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorlu/state/record.h"

namespace vorlu {

/// An application as the report tells it.
struct AppRecord {
  std::optional<std::string> appName;
  std::optional<std::string> appIdentifier;
  std::optional<std::string> installedPath;
  std::optional<std::string> installedVersion;
  std::optional<bool> updateCached;
  std::optional<bool> updatesAllowed;
  static constexpr auto fields() {
    using A = AppRecord;
    return std::array{field<&A::appName>("appName"),
                      field<&A::appIdentifier>("appIdentifier"),
                      field<&A::installedPath>("installedPath"),
                      field<&A::installedVersion>("installedVersion"),
                      field<&A::updateCached>("updateCached"),
                      field<&A::updatesAllowed>("updatesAllowed")};
  }
};

struct ErrorLog {
  std::optional<std::string> timeStamp;
  std::optional<std::string> errorMessage;
  static constexpr auto fields() {
    return std::array{field<&ErrorLog::timeStamp>("timeStamp"), field<&ErrorLog::errorMessage>("errorMessage")};
  }
};

struct WarningLog {
  std::optional<std::string> timeStamp;
  std::optional<std::string> warningMessage;
  static constexpr auto fields() {
    return std::array{field<&WarningLog::timeStamp>("timeStamp"), field<&WarningLog::warningMessage>("warningMessage")};
  }
};

/// What the computer is and how it stands, in the order in which it is sent. Dates are in the form fullStamp.
struct ComputerRecord {
  std::optional<std::string> customerName;
  std::optional<std::string> serialNumber;
  std::optional<std::string> computerName;
  std::optional<std::string> modelNumber;
  std::optional<std::string> architecture;  ///< name of the chip
  std::optional<std::string> osVersion;
  std::optional<std::string> diskCapacity;  ///< as in "500 GB"
  std::optional<std::string> freeDiskSpace;
  std::optional<bool> filevaultEnabled;
  std::optional<bool> gatekeeperEnabled;
  std::optional<bool> sipEnabled;
  std::optional<std::string> lastUser;
  std::optional<std::string> lastUserFullName;
  std::optional<std::string> lastCheckin;
  std::optional<bool> selfUpdatesEnabled;
  std::optional<bool> backgroundUpdatesEnabled;
  std::optional<bool> promptsEnabled;
  std::optional<std::string> vorluVersion;
  std::optional<std::string> lastPrompt;
  std::optional<std::string> nextPrompt;
  std::optional<std::string> lastRunStatus;
  std::optional<bool> deferralsAllowed;
  std::optional<std::string> deferralLimit;
  std::optional<std::string> deferralsRemaining;
  std::optional<std::string> lastCompliant;
  std::optional<std::vector<AppRecord>> AppInventory;
  std::optional<std::vector<vorlu::ErrorLog>> ErrorLog;
  std::optional<std::vector<vorlu::WarningLog>> WarningLog;
  static constexpr auto fields() {
    using C = ComputerRecord;
    return std::array{field<&C::customerName>("customerName"),
                      field<&C::serialNumber>("serialNumber"),
                      field<&C::computerName>("computerName"),
                      field<&C::modelNumber>("modelNumber"),
                      field<&C::architecture>("architecture"),
                      field<&C::osVersion>("osVersion"),
                      field<&C::diskCapacity>("diskCapacity"),
                      field<&C::freeDiskSpace>("freeDiskSpace"),
                      field<&C::filevaultEnabled>("filevaultEnabled"),
                      field<&C::gatekeeperEnabled>("gatekeeperEnabled"),
                      field<&C::sipEnabled>("sipEnabled"),
                      field<&C::lastUser>("lastUser"),
                      field<&C::lastUserFullName>("lastUserFullName"),
                      field<&C::lastCheckin>("lastCheckin"),
                      field<&C::selfUpdatesEnabled>("selfUpdatesEnabled"),
                      field<&C::backgroundUpdatesEnabled>("backgroundUpdatesEnabled"),
                      field<&C::promptsEnabled>("promptsEnabled"),
                      field<&C::vorluVersion>("vorluVersion"),
                      field<&C::lastPrompt>("lastPrompt"),
                      field<&C::nextPrompt>("nextPrompt"),
                      field<&C::lastRunStatus>("lastRunStatus"),
                      field<&C::deferralsAllowed>("deferralsAllowed"),
                      field<&C::deferralLimit>("deferralLimit"),
                      field<&C::deferralsRemaining>("deferralsRemaining"),
                      field<&C::lastCompliant>("lastCompliant"),
                      field<&C::AppInventory>("AppInventory"),
                      field<&C::ErrorLog>("ErrorLog"),
                      field<&C::WarningLog>("WarningLog")};
  }
};

struct ReportData {
  std::optional<vorlu::ComputerRecord> ComputerRecord;
  static constexpr auto fields() { return std::array{field<&ReportData::ComputerRecord>("ComputerRecord")}; }
};

}  // namespace vorlu
