#pragma once

namespace vorlu {

struct Vorlu;

/// Adds to the progress bar and shows it in the window.
void stepBar(Vorlu& vorlu, int steps = 1);
/// Gives the bar a value and shows it.
void setBar(Vorlu& vorlu, int value);

}  // namespace vorlu
