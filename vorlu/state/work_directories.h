#pragma once

namespace vorlu {

struct Vorlu;

/// Creates `Run` (0700), `Run`/Downloads and `Run`/Output (0755), root:wheel, each only when it is missing.
void ensureWorkDirectories(Vorlu& vorlu);

}  // namespace vorlu
