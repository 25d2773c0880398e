#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/state/record.h"

namespace vorlu {

struct Vorlu;

/// `Run`/Receipts/{app} Patch Receipt.plist: an administrator's mark for a forced update.
struct ReceiptData {
  std::string gracePeriod;                     ///< minutes as decimal text, or "N/A"
  std::string deferrals;                       ///< decimal text, or "N/A"
  std::optional<std::int64_t> deferralPeriod;  ///< minutes
  std::optional<std::int64_t> lastRun;         ///< seconds since the epoch
  static constexpr auto fields() {
    return std::array{requiredField<&ReceiptData::gracePeriod>("gracePeriod"),
                      requiredField<&ReceiptData::deferrals>("deferrals"),
                      field<&ReceiptData::deferralPeriod>("deferralPeriod"), field<&ReceiptData::lastRun>("lastRun")};
  }
};

/// `Run`/watchReceipt.plist: what a running install publishes for a second agent.
struct WatchReceiptData {
  std::optional<std::string> parentPID;
  std::optional<std::vector<std::string>> userPromptPID;
  std::optional<bool> isUpdate;
  std::optional<std::int64_t> currentUpdate;
  std::optional<std::int64_t> updateCount;
  std::optional<std::string> appName;
  std::optional<std::string> identifier;
  std::optional<bool> appBundle;
  std::optional<bool> noProgress;
  std::optional<bool> completePrompt;
  std::optional<std::string> promptPosition;
  std::optional<std::string> icon;
  std::optional<std::string> overlayIcon;
  std::optional<std::vector<std::string>> blockingApps;
  std::optional<std::string> primaryBinary;
  static constexpr auto fields() {
    using W = WatchReceiptData;
    return std::array{field<&W::parentPID>("parentPID"),
                      field<&W::userPromptPID>("userPromptPID"),
                      field<&W::isUpdate>("isUpdate"),
                      field<&W::currentUpdate>("currentUpdate"),
                      field<&W::updateCount>("updateCount"),
                      field<&W::appName>("appName"),
                      field<&W::identifier>("identifier"),
                      field<&W::appBundle>("appBundle"),
                      field<&W::noProgress>("noProgress"),
                      field<&W::completePrompt>("completePrompt"),
                      field<&W::promptPosition>("promptPosition"),
                      field<&W::icon>("icon"),
                      field<&W::overlayIcon>("overlayIcon"),
                      field<&W::blockingApps>("blockingApps"),
                      field<&W::primaryBinary>("primaryBinary")};
  }
};

/// Marks a missed patch day, tells Jamf Pro and waits 40 seconds for new profiles. An existing mark is only logged.
/// Ends the run with 1 when the mark can't be written.
void writeMissedUpdateReceipt(Vorlu& vorlu);
void removeMissedUpdateReceipt(Vorlu& vorlu);
/// Removes the receipt of `app` and the current task.
void removeForcedUpdateReceipt(Vorlu& vorlu, const std::string& app);
void removeWatchReceipt(Vorlu& vorlu);
/// Publishes the work of this process in place of an old watch receipt, whose readers get two seconds to let go of it.
/// A failed write is logged.
void writeWatchReceipt(Vorlu& vorlu, const WatchReceiptData& receipt);

}  // namespace vorlu
