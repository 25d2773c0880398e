#pragma once

namespace vorlu {

struct Vorlu;

/// Tries the updates of the testing catalog without asking anybody, and ends the run: with 0, or with 1 when one of
/// them failed.
[[noreturn]] void testUpdateFlow(Vorlu& vorlu);

}  // namespace vorlu
