#pragma once

#include <string_view>

namespace vorlu {

struct Vorlu;

/// Appends a line to the command file of `Dialog`. "quit:" removes the watch receipt as well.
void writeDialogCommand(Vorlu& vorlu, std::string_view command);

}  // namespace vorlu
