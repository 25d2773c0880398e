#pragma once

#include <string>

namespace vorlu {

/// What this process knows of other agents on the computer.
enum class Standing {
  unknown,  ///< nobody has looked yet
  alone,    ///< the only agent, or let go on by the coordination
  beside,   ///< another agent works: run data's run type is that agent's, and nothing is installed or asked
};

/// What kind of run this is. The dispatcher sets the modes before the flow starts, and nothing clears them.
struct RunModes {
  bool installMode = false;
  bool installProgressMode = false;
  bool updateMode = false;
  bool hourlyMode = false;
  bool forcedMode = false;
  bool runMode = false;
  bool selfServiceMode = false;
  bool reportMode = false;
  bool testingBlueprints = false;  ///< the catalog of label "testing_blueprints"
  bool testInstall = false;

  std::string runStage = "Updates";  ///< where the run stands: the category of system log records
  int runExitStatus = 0;             ///< exit status of the scheduled flows
  Standing standing = Standing::unknown;
  bool letGoOn = false;      ///< the coordination has let this process work: a later pass doesn't queue it again
  std::string requestedApp;  ///< identifier that an install was asked for
};

}  // namespace vorlu
