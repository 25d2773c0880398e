#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// This process is the one that works: it waits for nobody, or was let go on. What a crash left behind is cleared.
void noteAlone(Vorlu& vorlu);
/// Another agent works; this one writes no run type.
void noteBeside(Vorlu& vorlu);

/// Removes what a run that was killed left behind: its run type and its watch receipt.
void clearTracesOfCrash(Vorlu& vorlu);

/// Whether this process is the one that works, by what was noted last; looks for other agents when nothing was. A run
/// that isn't alone neither installs nor asks the user.
bool isAlone(Vorlu& vorlu);

/// The flow in progress by run data, "N/A" between runs or when there is none.
std::string readRunType(Vorlu& vorlu);

/// The one writer of `CurrentRunType`. Other agents are judged by that key, so a process that isn't alone writes
/// nothing.
void setCurrentRunType(Vorlu& vorlu, const std::string& type);

}  // namespace vorlu
