#pragma once

namespace vorlu {

struct Vorlu;

enum class Coordination { goOn, searchFailed };

/// Lets this process go on, or ends it with 0 because another agent works: an update check never runs beside another.
/// A search that failed is logged.
Coordination coordinateInstances(Vorlu& vorlu);

}  // namespace vorlu
