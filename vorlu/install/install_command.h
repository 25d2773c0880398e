#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Installs one application of the catalog on request, and ends the run: with 0 when it is there at the end, with 1
/// when it was refused, was there before, or could not be installed. `identifier` is any key of the entry. With
/// `showProgress` a window shows the install, prompts tell of a refusal or failure, and the user is asked whether to
/// launch the app.
[[noreturn]] void installApp(Vorlu& vorlu, const std::string& identifier, bool showProgress);

}  // namespace vorlu
