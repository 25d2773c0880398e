#pragma once

#include <optional>
#include <string>

#include "ctl/explained_step.h"
#include "ctl/fate.h"
#include "vorlu/platform/platform.h"

namespace vorlu {
class Site;
}

namespace vorlu::ctl {

/// Why an application would or would not be updated now.
struct Explanation {
  std::string app;  ///< the catalog's name of it; as it was asked for when the catalog has none
  std::optional<std::string> identifier;
  std::optional<std::string> installedVersion;
  std::optional<std::string> latestVersion;
  Fate fate = Fate::notInCatalog;
  std::string summary;                    ///< one sentence
  std::optional<std::string> decidedBy;   ///< of the step that holds it back
  std::optional<std::string> nextPrompt;  ///< earliest, in ISO 8601, where the user has to be asked
  Steps steps;
};

/// Asks the agent's own functions what its next recurring run does about `app`, which is named by any key of its
/// catalog entry. Changes nothing. A failure says what can't be read.
Result<Explanation> explainApp(Platform& mac, const Site& site, const std::string& app, bool runScripts);

std::string toText(const Explanation& explanation);
std::string toJson(const Explanation& explanation);

}  // namespace vorlu::ctl
