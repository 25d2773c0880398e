#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

struct Vorlu;

/// A note that an agent keeps in the run directory while something of its work would outlive a kill. It leads the next
/// run there. Each process has its own, so that two agents at work don't hide each other's.
struct WorkNote {
  std::string kind;  ///< "placement", "images", "prompt"
  pid_t owner = 0;
  std::string text = {};

  std::string path() const;
  Status write(FileManager& files) const;
  Status remove(FileManager& files) const { return files.remove(path()); }
};

/// The notes of agents that have ended, and of an earlier process with this one's id; those that can be read. None
/// while nobody can tell which agents are at work. An agent that waits for this one to end is at work, too.
std::vector<WorkNote> notesOfEndedRuns(Vorlu& vorlu, std::string_view kind);

}  // namespace vorlu
