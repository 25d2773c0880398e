#pragma once

#include <array>
#include <optional>
#include <string>

#include "vorlu/state/record.h"

namespace vorlu {

/// One record of the manifest: a package of the agent or of a component.
struct SelfUpdateStruct {
  std::optional<std::string> componentName;  ///< "Vorlu" or "Dialog"
  std::optional<std::string> downloadURL;
  std::optional<std::string> codeSigning;  ///< expected signature identity of the package
  std::optional<std::string> latestVersion;
  std::optional<std::string> requirement;  ///< lowest macOS version for "Vorlu", lowest agent version for a component
  static constexpr auto fields() {
    using S = SelfUpdateStruct;
    return std::array{field<&S::componentName>("componentName"), field<&S::downloadURL>("downloadURL"),
                      field<&S::codeSigning>("codeSigning"), field<&S::latestVersion>("latestVersion"),
                      field<&S::requirement>("requirement")};
  }
};

}  // namespace vorlu
