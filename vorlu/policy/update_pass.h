#pragma once

namespace vorlu {

struct Vorlu;

/// How a pass treats what it finds.
struct PassSettings {
  bool cacheOnly = false;  ///< fetch installers and install nothing
};

/// What became of the pending updates.
struct PassResult {
  bool nothingPending = false;
  bool inUse = false;        ///< an application was left alone
  bool allInstalled = true;  ///< none was left alone, failed or passed over
};

/// Looks for updates and, without asking anybody, installs those of apps that aren't in use; installers of the others
/// stay in the cache, and `updates.skippedUpdates` names those apps; `updates.failedUpdates` those that failed, which
/// keep a later step of the run from counting the computer as compliant. Puts back first what a killed run moved aside.
PassResult runUpdatePass(Vorlu& vorlu, const PassSettings& settings);

/// The pass of a flow that asks the user afterwards. Compliance is recorded when it has emptied the list, or when a
/// check found nothing.
void initialiseUpdates(Vorlu& vorlu);

}  // namespace vorlu
