#pragma once

namespace vorlu {

struct Vorlu;

/// The first word of the forced step, before the start-up of a run on demand: other agents learn of it.
void announceForcedUpdates(Vorlu& vorlu);

/// Goes through the receipts by which an administrator marks apps for a forced update, one after the other. What holds
/// one back or fails it has no effect on the next.
void forcedUpdateFlow(Vorlu& vorlu);

}  // namespace vorlu
