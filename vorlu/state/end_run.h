#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Thrown to leave the process; caught once, in the function that `main` returns. Not a std::exception, so that no
/// error handler takes it for a fault.
struct RunEnded {
  int status;
};

/// The normal end of a run: `CurrentRunType` "N/A", "Exiting...", `status`.
[[noreturn]] void endRun(Vorlu& vorlu, int status);
/// The same where run data itself can't be had: no run type is written.
[[noreturn]] void endRunWithoutRunData(Vorlu& vorlu, int status);
/// Leaves without a word and without touching run data.
[[noreturn]] void exitProcess(int status);

/// An unrecoverable condition: logs `text`, tells it (or `jamfText`) to Jamf Pro, runs the inventory, ends the run
/// with 1.
[[noreturn]] void fatalStop(Vorlu& vorlu, const std::string& text);
[[noreturn]] void fatalStop(Vorlu& vorlu, const std::string& text, const std::string& jamfText);

/// `jamf recon` where Jamf Pro is installed.
void runJamfInventory(Vorlu& vorlu);

}  // namespace vorlu
