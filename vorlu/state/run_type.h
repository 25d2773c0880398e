#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace vorlu {

struct Vorlu;

/// Ids of the other running agents, by `pgrep -x vorlu`.
struct Duplicates {
  bool searched = false;
  std::string error;  ///< why the search itself failed
  std::vector<pid_t> pids;
};
Duplicates findDuplicates(Vorlu& vorlu);

/// Keeps in `modes.standing` what a search has found. A process that first finds itself alone resets a run type that a
/// crash left behind, and removes the watch receipt of a dead process.
void noteStanding(Vorlu& vorlu, const Duplicates& others);

/// Whether no other agent runs, by the last search; searches when there was none.
bool isAlone(Vorlu& vorlu);

/// The one writer of `CurrentRunType`. Other agents are judged by that key, so a process that isn't alone writes
/// nothing.
void setCurrentRunType(Vorlu& vorlu, const std::string& type);

}  // namespace vorlu
