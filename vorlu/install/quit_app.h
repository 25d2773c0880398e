#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Asks an application in the console user's session to quit and gives it 5 seconds to answer. The output of the
/// script; whether the application runs still is for the caller to find out.
std::string quitApp(Vorlu& vorlu, const std::string& appName);

}  // namespace vorlu
