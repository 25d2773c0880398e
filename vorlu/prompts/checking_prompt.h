#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace vorlu {

struct Vorlu;

/// Tells a Self Service user that updates are being looked for. Comes back after one second, with the prompt open:
/// the process to close it by, nothing when it couldn't be started.
std::optional<pid_t> showCheckingPrompt(Vorlu& vorlu, const std::string& dialogIcon);
/// Closes it. One that started too late to hear of it, or can't be told, is killed after three seconds: it has no
/// button for the user to close it by.
void closeCheckingPrompt(Vorlu& vorlu, const std::optional<pid_t>& prompt);

}  // namespace vorlu
