#pragma once

namespace vorlu {

struct Vorlu;

enum class Coordination {
  goOn,
  failed,  ///< the search failed, or an agent that had to be ended still runs; logged
};

/// Of several agents one works at a time, in one order for all: by age, then by process id. Lets this process go on,
/// after waiting for the agents before it or ending one that is stuck or less urgent, or ends it with 0. Afterwards
/// `isAlone` tells whether it may install and ask, or only goes on beside another agent.
Coordination coordinateInstances(Vorlu& vorlu);

}  // namespace vorlu
