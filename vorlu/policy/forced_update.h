#pragma once

#include <cstdint>
#include <string>

#include "vorlu/state/receipts.h"

namespace vorlu {

struct Vorlu;

/// Whether the user may be asked again: the receipt never ran, or the end of its last deferral lies before `now`.
bool deferralPeriodElapsed(const ReceiptData& receipt, std::int64_t now);

/// What became of one receipt.
enum class ForcedOutcome {
  nothingToForce,  ///< no such app, or no update of it: the receipt is gone
  heldBack,        ///< by its deferral period, run limits, acceptable use, an empty console or doubt; untouched
  deferred,        ///< the user has one deferral less
  updated,         ///< the receipt is gone
  failed,          ///< the receipt stays and waits for its period
};

/// Works on the receipt of `app`, which is named by any key of its catalog entry: updates the app at once when it isn't
/// in use, else asks the user to quit it. The deferral state of the whole computer isn't touched.
ForcedOutcome processForcedReceipt(Vorlu& vorlu, const std::string& app);

}  // namespace vorlu
