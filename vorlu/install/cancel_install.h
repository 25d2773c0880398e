#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Ends a run whose install window stands open: shows there that the install was cancelled, tells the user the `reason`
/// in a prompt, and exits with 1. `cancelText` keeps the reason.
[[noreturn]] void cancelInstall(Vorlu& vorlu, const std::string& reason);

}  // namespace vorlu
