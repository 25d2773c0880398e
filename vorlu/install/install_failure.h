#pragma once

#include <string>
#include <vector>

#include "vorlu/install/install_job.h"

namespace vorlu {

/// The ways in which an install fails, in the order of the stages.
enum class InstallFailure {
  notInCatalog,
  notInstallable,
  noSiliconURL,
  noIntelURL,
  noUniversalURL,
  diskSpace,
  minimumOS,
  maximumOS,
  download,
  unknownType,
  conversion,
  mount,
  packageSignature,
  signature,
  hash,
  choicesFile,
  nestedItem,
  sourceItem,
};

/// What a failed stage leaves to be removed. In any case no image of this install stays attached.
enum class CleanUp {
  none,
  output,     ///< the Output directory's content, without a word
  downloads,  ///< that, and the file in the cache
  file,       ///< the file in the cache alone
  ofType      ///< `file` of a package, `downloads` of the other types
};

struct FailureLine {
  const char* text;  ///< with placeholders by name, as in the other texts of the row
  bool quiet = false;
};

struct FailureRow {
  std::vector<FailureLine> lines;
  const char* cancelText;  ///< tells the user of an install window why it was cancelled
  CleanUp cleanUp;
};

const FailureRow& failureRow(InstallFailure failure);

/// Ends the pipeline for this app: logs, cleans up, lets the Mac sleep, and marks the app as failed.
InstallOutcome fail(InstallJob& job, InstallFailure failure);

/// Marks the app as failed in the values that flows read.
void recordInstallFailure(InstallJob& job);

}  // namespace vorlu
