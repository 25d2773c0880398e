#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vorlu/platform/file_manager.h"
#include "vorlu/state/receipts.h"

namespace vorlu {

struct Vorlu;

/// Whether a name in the receipts' folder is a mark for a forced update: the app that it names, in the administrator's
/// spelling, which may be empty. Nothing for any other file.
std::optional<std::string> markedApp(std::string_view fileName);

/// Path of the receipt of `app`.
std::string forcedReceiptPath(const std::string& app);

/// The receipt's keys, each decoded by itself: one that can't be read is "N/A", or absent for the integers, and spoils
/// no other. A receipt that is no property list has none.
ReceiptData loadForcedReceipt(FileManager& files, const std::string& path);

/// Stores what has changed of the receipt, as an XML property list; the administrator's other keys stay. A failed write
/// is logged. A receipt that an administrator has removed meanwhile doesn't come back.
void updateReceipt(Vorlu& vorlu, const std::string& path, const ReceiptData& receipt);

/// Deferrals that the administrator still grants; nothing when none are allowed at all ("N/A", or no number).
std::optional<std::int64_t> deferralsOf(const ReceiptData& receipt);
/// Grace before the app is quit, in minutes; 15 where the receipt gives none.
std::int64_t graceMinutesOf(const ReceiptData& receipt);

/// Minutes between two deferrals; 60 where the receipt gives none.
std::int64_t periodMinutesOf(const ReceiptData& receipt);

/// Marks `app` as the one in work, in `Run`/Current Task. Failures are logged.
void beginCurrentTask(Vorlu& vorlu, const std::string& app);
void endCurrentTask(Vorlu& vorlu);

}  // namespace vorlu
