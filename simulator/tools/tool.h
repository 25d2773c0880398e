#pragma once

#include <string>
#include <vector>

namespace vorlu::simulator {

using Arguments = std::vector<std::string>;

// The stand-ins that one program holds; it acts as the tool whose name it is called by. Each takes the arguments
// without the name and answers the exit status.

int runDate(const Arguments& arguments);
int runKillall(const Arguments& arguments);
int runLaunchd(const Arguments& arguments);
int runOpen(const Arguments& arguments);
int runOsascript(const Arguments& arguments);
int runPgrep(const Arguments& arguments);
int runPlistBuddy(const Arguments& arguments);
int runPlutil(const Arguments& arguments);
int runPs(const Arguments& arguments);
int runSleep(const Arguments& arguments);

}  // namespace vorlu::simulator
