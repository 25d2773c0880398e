#pragma once

#include "ctl/command.h"

namespace vorlu::ctl {

/// `vorluctl lint-catalog FILE [--json]`: what is wrong with a catalog.
Answer lintCatalogCommand(const Arguments& arguments);
/// `vorluctl lint-prefs FILE [--json]`: what is wrong with a profile.
Answer lintPrefsCommand(const Arguments& arguments);

}  // namespace vorlu::ctl
