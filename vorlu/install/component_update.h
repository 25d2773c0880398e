#pragma once

namespace vorlu {

struct Vorlu;
class FileManager;

/// Whether the prompt component is there: its bundle, its program and its receipt.
bool componentsInstalled(FileManager& files);

/// Installs the prompt component when it is missing or the server offers a newer one that this agent can use. The old
/// one is kept until the install has succeeded. Failures are logged. `afterCheck` only says who calls.
void updateComponents(Vorlu& vorlu, bool afterCheck);

}  // namespace vorlu
