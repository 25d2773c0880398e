#pragma once

namespace vorlu {

struct Vorlu;

/// `--update run`, which the scheduler starts over and over: forced updates, the hourly check, the prompts and the
/// report, each when it is due. Ends the run with the status of the scheduled flow.
[[noreturn]] void recurringRun(Vorlu& vorlu);

}  // namespace vorlu
