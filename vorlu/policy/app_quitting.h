#pragma once

namespace vorlu {

struct Vorlu;

/// Takes the selected app, which runs, away from its user: asks it to quit where the catalog wants that, and forces it
/// when it won't. It may run still afterwards, which is logged.
void quitRunningApp(Vorlu& vorlu);

/// Ends every program of the selected app's bundle, in whatever state it is. Does nothing for another kind of app.
void killAppBinaries(Vorlu& vorlu);

}  // namespace vorlu
