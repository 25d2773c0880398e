#pragma once

#include "simulator/dialog/command_file.h"
#include "simulator/dialog/prompt.h"

namespace vorlu::simulator {

/// How a prompt ended, as its exit status. A prompt that is killed ends by the signal.
namespace ending {
constexpr int button1 = 0;
constexpr int button2 = 2;
constexpr int timerRanOut = 4;
constexpr int quit = 10;  ///< by "quit:", by the quit key or by the desktop
constexpr int noDisplay = 20;
}  // namespace ending

/// Shows the prompt in a window until it ends. The window's library, with Qt behind it, is loaded only here: it lies
/// beside this program or among the simulator's own files. Without it or without a display the prompt ends at once.
int showInWindow(const Prompt& prompt, CommandFile& commands);

/// What the library exports under `showPromptName`.
using ShowPrompt = int (*)(const Prompt&, CommandFile&);
constexpr const char* showPromptName = "vorluShowPrompt";

}  // namespace vorlu::simulator
