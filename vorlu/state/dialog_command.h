#pragma once

#include <string_view>

namespace vorlu {

struct Vorlu;

/// Appends a line to the command file of `Dialog`. "quit:" removes the watch receipt as well, and the note of a prompt.
void writeDialogCommand(Vorlu& vorlu, std::string_view command);

/// The kind of note (`work_notes.h`) by which the next run finds the prompts of a killed one. They would stand on the
/// screen with nobody to hear their answers.
inline constexpr const char* promptNote = "prompt";
void notePrompt(Vorlu& vorlu);
void forgetPrompt(Vorlu& vorlu);

}  // namespace vorlu
