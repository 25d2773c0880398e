#include "vorlu/state/forced_receipt.h"

#include <fmt/format.h>

#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/run_data.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::string_view receiptEnding = " Patch Receipt.plist";
constexpr std::int64_t defaultGraceMinutes = 15;
constexpr std::int64_t defaultPeriodMinutes = 60;
const Ownership stateOwnership{0644, "root", "wheel"};

/// One key into the receipt; a failure changes nothing.
void readKey(const std::string& bytes, const FieldOf<ReceiptData>& key, ReceiptData& receipt) {
  ReceiptData read = receipt;
  const Status status = readPropertyList(bytes, [&](Node& root) {
    CodingPath path;
    if (root.kind() != NodeKind::dictionary) throw DecodingError::dataCorrupted("no dictionary", path);
    decodeByKey(read, root, path, std::array{key});
  });
  if (status) receipt = read;
}

void clearCurrentTask(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (!files.exists(paths::currentTask)) return;
  if (const Status removed = files.remove(paths::currentTask); !removed)
    vorlu.log(fmt::format("Error removing current task directory: {}", removed.error()));
}

/// What the file holds, with the changes of this run; where it holds no property list, the receipt alone.
std::string changedReceipt(FileManager& files, const std::string& path, const ReceiptData& receipt) {
  const Result<std::string> bytes = files.read(path);
  auto dictionary = bytes ? PropertyDictionary::parse(*bytes) : Result<PropertyDictionary>(bytes.failure());
  if (!dictionary) return encodePropertyList(receipt);
  if (deferralsOf(receipt)) dictionary->set("deferrals", receipt.deferrals);
  if (receipt.lastRun) dictionary->set("lastRun", *receipt.lastRun);
  return dictionary->toXml();
}

}  // namespace

std::optional<std::string> markedApp(std::string_view fileName) {
  if (!fileName.ends_with(receiptEnding)) return std::nullopt;
  fileName.remove_suffix(receiptEnding.size());
  return std::string(fileName);
}

std::string forcedReceiptPath(const std::string& app) {
  return fmt::format("{}/{}{}", paths::receipts, app, receiptEnding);
}

ReceiptData loadForcedReceipt(FileManager& files, const std::string& path) {
  ReceiptData receipt{"N/A", "N/A", std::nullopt, std::nullopt};
  const Result<std::string> bytes = files.read(path);
  if (!bytes) return receipt;
  for (const auto& key : ReceiptData::fields()) readKey(*bytes, key, receipt);
  return receipt;
}

void updateReceipt(Vorlu& vorlu, const std::string& path, const ReceiptData& receipt) {
  FileManager& files = vorlu.platform.files;
  if (!files.exists(path)) return;
  const std::string text = changedReceipt(files, path, receipt);
  const Status written = text.empty() ? Status(Failure{path + ": it can't be encoded"})
                                      : files.writeAtomically(path, text, stateOwnership);
  if (!written) vorlu.log(fmt::format("Error: Could not update the forced update receipt: {}", written.error()));
}

std::optional<std::int64_t> deferralsOf(const ReceiptData& receipt) {
  return parseCount(receipt.deferrals);
}

std::int64_t graceMinutesOf(const ReceiptData& receipt) {
  const auto minutes = parseCount(receipt.gracePeriod);
  return minutes && *minutes >= 1 ? *minutes : defaultGraceMinutes;
}

std::int64_t periodMinutesOf(const ReceiptData& receipt) {
  return receipt.deferralPeriod.value_or(defaultPeriodMinutes);
}

void beginCurrentTask(Vorlu& vorlu, const std::string& app) {
  FileManager& files = vorlu.platform.files;
  clearCurrentTask(vorlu);
  if (const Status made = files.createDirectory(paths::currentTask, {0755, "root", "wheel"}); !made)
    vorlu.log(fmt::format("Error creating current task directory: {}", made.error()));
  const Status written = files.writeAtomically(fmt::format("{}/{}", paths::currentTask, app), "", stateOwnership);
  if (!written) vorlu.log(fmt::format("Error creating the App receipt: {}", written.error()));
}

void endCurrentTask(Vorlu& vorlu) {
  clearCurrentTask(vorlu);
}

}  // namespace vorlu
