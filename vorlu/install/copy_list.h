#pragma once

#include <string>
#include <variant>
#include <vector>

#include "vorlu/install/install_failure.h"

namespace vorlu {

/// One item to place.
struct AppCopyArr {
  std::string itemPath;     ///< full path inside the search root
  std::string appCopyName;  ///< name under `destinationPath`; empty: its own
};

/// What `sourceItems` name below `root`, each one verified on the way, or why nothing may be installed.
std::variant<std::vector<AppCopyArr>, InstallFailure> buildCopyList(InstallJob& job, const std::string& root);

/// The name under which an item is placed. `item` is the catalog's text, `count` how many there are.
std::string copyNameFor(const CurrentApp& app, std::size_t count, const std::string& item, const std::string& found);

}  // namespace vorlu
