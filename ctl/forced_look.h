#pragma once

#include <optional>

#include "ctl/app_look.h"

namespace vorlu::ctl {

/// What the marks for a forced update make of an application.
struct ForcedLook {
  Steps steps;
  std::optional<Fate> fate;  ///< nothing without a mark, or while all are held back
};

/// Goes through the receipts that name the entry. An update of it must be due.
ForcedLook lookAtForced(Vorlu& vorlu, const AppBlueprints& entry, const AppLook& app);

/// The receipts that name the entry, by the names that the administrator gave.
std::vector<std::string> marksOf(Vorlu& vorlu, const AppBlueprints& entry);

}  // namespace vorlu::ctl
