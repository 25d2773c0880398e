#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace vorlu {

struct Vorlu;

/// Ids of the other running agents, by `pgrep -x vorlu`; nothing when the search itself failed.
struct Duplicates {
  bool searched = false;
  std::vector<pid_t> pids;
};
Duplicates findDuplicates(Vorlu& vorlu);

/// Looks for other agents once in a process and keeps the answer in `modes.standing`. A process that finds itself alone
/// resets a run type that a crash left behind, and removes the watch receipt of a dead process.
bool isAlone(Vorlu& vorlu);

/// The one writer of `CurrentRunType`. Other agents are judged by that key, so a process that isn't alone writes
/// nothing.
void setCurrentRunType(Vorlu& vorlu, const std::string& type);

}  // namespace vorlu
