#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Tells a Self Service user that updates are being looked for. Comes back after one second, with the prompt open.
void showCheckingPrompt(Vorlu& vorlu, const std::string& dialogIcon);
/// Closes it.
void closeCheckingPrompt(Vorlu& vorlu);

}  // namespace vorlu
