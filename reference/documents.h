#pragma once

#include <string>
#include <vector>

#include "vorlu/platform/result.h"

namespace vorlu::reference {

/// A file of the source tree that is made from the tables of keys.
struct Document {
  std::string path;  ///< from the top of the tree
  std::string text;
};

/// All of them as they should be. The pages in docs/ are read first: what stands above their mark is written by hand
/// and stays.
Result<std::vector<Document>> documents(const std::string& sourceTree);

}  // namespace vorlu::reference
