#pragma once

namespace vorlu {

struct Vorlu;

/// What a flow asks of its start-up.
struct StartUp {
  bool offlineTolerated = false;  ///< no internet is a warning, not an error
  bool forcedPrompts = false;     ///< failures show the update-flavoured error prompt
  bool showProgress = false;      ///< failures show the install-flavoured error prompt
  bool validateOnly = false;      ///< only what is needed to look an identifier up
};

/// What every flow that talks to the server or installs calls first: clears what older versions left, makes sure of the
/// key material, coordinates with other agents, tests system and network, and makes sure that components and state
/// exist. Ends the run with 1 when the flow can't go on.
void initialiseRun(Vorlu& vorlu, const StartUp& startUp);

}  // namespace vorlu
