#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace vorlu {

struct Vorlu;

/// Whether a person is logged in: the console user has a name and is none of "root", "loginwindow" and "Unknown".
bool somebodyAtConsole(Vorlu& vorlu);

/// Runs a shell line to its end. Its values must have been escaped; its status means nothing. `grace`: how long it may
/// take once the agent has been asked to end.
void runShell(Vorlu& vorlu, std::string line, std::chrono::seconds grace = {});

/// `su {consoleUser} -c '{line}'`. The values in `line` must have been escaped for a shell.
std::string asConsoleUser(Vorlu& vorlu, std::string_view line);

/// `open {options}"{item}"` in the session of the console user, who is root for all we care when nobody is there: then
/// nothing is opened. `options` such as "-g -a " end with a blank.
void openAsConsoleUser(Vorlu& vorlu, std::string_view options, const std::string& item,
                       std::chrono::seconds grace = {});

}  // namespace vorlu
