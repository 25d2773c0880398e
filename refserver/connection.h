#pragma once

namespace vorlu::refserver {

/// Closes this process's end of the TCP connection between its port and the client's, so that nothing more is sent.
/// The HTTP library has no call to leave a request unanswered.
void shutDownConnection(int ownPort, int clientPort);

}  // namespace vorlu::refserver
