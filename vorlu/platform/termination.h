#pragma once

namespace vorlu {

/// The agent has been asked to end (SIGTERM). Thrown by whatever waits: a child's end, a transfer, a sleep; once asked,
/// nothing of that kind begins any more but commands with a `grace`. It passes the scopes that release what is held and
/// is caught once, in the function that `main` returns. Not a std::exception, so that no error handler takes it for a
/// fault.
struct Terminated {
  static constexpr int status = 143;  ///< 128 and the signal's number, as a shell shows it
};

}  // namespace vorlu
