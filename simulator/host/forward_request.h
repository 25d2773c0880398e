#pragma once

#include <sys/types.h>

namespace vorlu::simulator {

/// Asks a process to bring its window to the front. Anyone may ask, whoever runs the process: on a Mac that is between
/// the user and the window server. A process without a window takes no notice.
void askForward(pid_t process);

/// From now on this process takes note of being asked.
void listenForForwardRequests();
/// Whether it was asked since the last call.
bool takeForwardRequest();

}  // namespace vorlu::simulator
