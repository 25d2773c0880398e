#pragma once

#include <string>

#include "vorlu/prompts/cancel_prompt.h"

namespace vorlu {

struct Vorlu;

/// Opens the window of the selected app's install and publishes it in the watch receipt. The bar stands at its
/// beginning.
void openInstallWindow(Vorlu& vorlu);

/// Shows in the window that the install was cancelled, after this many last ticks of the bar, and closes it.
void closeCancelledWindow(Vorlu& vorlu, int ticks);

/// Tells the user why there is no new app, and waits until the prompt is closed. With nobody at the console there is no
/// prompt.
void tellCancelled(Vorlu& vorlu, CancelReason reason, const std::string& appName);
/// The same in these words.
void tellCancelled(Vorlu& vorlu, const std::string& reason);

/// Tells that the selected app was installed at `path`, and opens it if the user wants to. With nobody at the console
/// there is no prompt.
void offerLaunch(Vorlu& vorlu, const std::string& path);

}  // namespace vorlu
