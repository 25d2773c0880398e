#pragma once

#include <vector>

#include "ctl/lint/record_lint.h"
#include "ctl/lint/script_faults.h"
#include "vorlu/server/blueprint.h"

namespace vorlu::ctl {

/// One entry of a catalog under examination.
struct EntryLint {
  const AppBlueprints& app;
  RecordLint lint;
};

/// Names, icon, versions and the way to read the installed one.
void checkIdentity(EntryLint& entry);
void checkVersions(EntryLint& entry);
/// Where the app is looked for, and what counts as running.
void checkLocation(EntryLint& entry);
/// Words between percent signs where nothing replaces them.
void checkPlaceholders(EntryLint& entry);
/// URLs, and which of them this kind of entry needs.
void checkDownload(EntryLint& entry);
/// Signature or hash.
void checkVerification(EntryLint& entry);
/// What the type of the download needs to be installed, and what it doesn't read.
void checkInstall(EntryLint& entry);
void checkScripts(EntryLint& entry, const SyntaxCheck& syntax);

/// Texts by which more than one entry can be meant.
void checkUniqueness(std::vector<EntryLint>& entries);

}  // namespace vorlu::ctl
