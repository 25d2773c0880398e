#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "vorlu/detection/app_inventory.h"
#include "vorlu/state/receipts.h"

namespace vorlu {

/// An app that an administrator has marked for a forced update: what the steps of its update hand on.
struct ForcedMark {
  std::string app;      ///< as the administrator spells it
  std::string appName;  ///< the catalog's; the administrator's where the catalog has no such app
  std::string path;     ///< of the receipt
  ReceiptData receipt;
  std::optional<std::int64_t> deferrals;  ///< left; nothing when none are allowed
  ApplicationInventory update;            ///< what is due
};

}  // namespace vorlu
