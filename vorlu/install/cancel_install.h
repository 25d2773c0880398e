#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Ends a run whose install window stands open: shows there that the install was cancelled, and exits with 1. `reason`
/// is the text for the user, which `cancelText` keeps.
[[noreturn]] void cancelInstall(Vorlu& vorlu, const std::string& reason);

}  // namespace vorlu
