#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "vorlu/platform/clock.h"
#include "vorlu/state/process_table.h"

namespace vorlu {

struct Vorlu;

/// Another running agent.
struct Duplicate {
  pid_t pid = 0;
  std::int64_t age = 0;   ///< seconds since it was started
  Seconds startedAt = 0;  ///< about; tells it from a later process with the same id
  std::string line;       ///< its command line when it was found by that
};

/// The other agents, all in the one order in which agents work: by age, then by process id.
struct Duplicates {
  bool searched = false;
  std::string error;              ///< why the search itself failed
  std::vector<Duplicate> ahead;   ///< those before this process, the first one first
  std::vector<Duplicate> behind;  ///< those after it, which wait for it
  std::vector<pid_t> above;       ///< agents that started this process by a script and wait for its end
  std::int64_t ownAge = 0;        ///< of this process, seconds
  bool none() const { return searched && ahead.empty() && behind.empty(); }
};

/// Agents by name. The process table is only read when there is one.
Duplicates findDuplicatesByName(Vorlu& vorlu);
/// Agents by name, and Self Service runs by their command line.
Duplicates findDuplicates(Vorlu& vorlu);

/// Whether a row of the table is the agent that was found before: root's, with an agent's program, and started then.
bool isSameAgent(const ProcessTable& table, const ProcessRow& row, const Duplicate& agent);

}  // namespace vorlu
