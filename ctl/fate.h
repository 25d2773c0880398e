#pragma once

namespace vorlu::ctl {

/// What the next recurring run does about an application.
enum class Fate {
  notInCatalog,
  notManaged,  ///< by the catalog or the lists of the preferences
  notInstalled,
  unknown,  ///< its version is told by a script that wasn't run
  upToDate,
  blocked,      ///< an update is due and can't be installed on this Mac
  update,       ///< installed without a question
  prompt,       ///< the user is asked and may defer
  gracePrompt,  ///< the user is told and has a grace period
  waits,        ///< an update is due and nothing happens yet
};

/// As JSON names it.
const char* nameOf(Fate fate);

}  // namespace vorlu::ctl
