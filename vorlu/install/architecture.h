#pragma once

#include <string_view>

#include "vorlu/server/current_app.h"

namespace vorlu {

/// `architecture` of the catalog is one of these words in any letter case.
bool isArchitecture(const CurrentApp& app, std::string_view lowerCaseWord);

/// One installer serves every processor.
inline bool isUniversal(const CurrentApp& app) {
  return isArchitecture(app, "universal");
}
/// Installers differ by processor, and an empty URL means that there is none for it.
inline bool isPerProcessor(const CurrentApp& app) {
  return isArchitecture(app, "arch");
}

}  // namespace vorlu
