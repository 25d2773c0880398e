#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Opens the window of the selected app's install and publishes it in the watch receipt. The bar stands at its
/// beginning.
void openInstallWindow(Vorlu& vorlu);

/// Shows in the window that the install was cancelled, after this many last ticks of the bar, and closes it.
void closeCancelledWindow(Vorlu& vorlu, int ticks);

/// Whether a prompt of an install shows the overlay icon.
enum class Overlay { shown, none };

/// Tells the user why the install was cancelled, and waits until the prompt is closed.
void tellCancelled(Vorlu& vorlu, const std::string& message, Overlay overlay = Overlay::shown);
/// The same for an install that left no app.
void tellFailed(Vorlu& vorlu, const std::string& message);

/// Tells that the selected app was installed at `path`, and opens it if the user wants to.
void offerLaunch(Vorlu& vorlu, const std::string& path);

}  // namespace vorlu
