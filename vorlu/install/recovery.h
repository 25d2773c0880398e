#pragma once

namespace vorlu {

struct Vorlu;

/// Clears what killed runs have left: unfinished items beside their targets, with apps that stood aside put back,
/// attached disk images, prompts that nobody listens to, and files that were being written. What belongs to another
/// agent at work is left alone.
void recoverKilledRuns(Vorlu& vorlu);

}  // namespace vorlu
