#pragma once

namespace vorlu {

struct Vorlu;

/// Clears what installs of killed runs have left: unfinished items beside their targets, with apps that stood aside put
/// back, and attached disk images. What belongs to another agent at work is left alone.
void recoverInstalls(Vorlu& vorlu);

}  // namespace vorlu
