#pragma once

#include <map>
#include <string>
#include <vector>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

/// Contents of directories, each listed when first asked for and kept: the applications of one walk look into the same
/// few folders.
class DirectoryListings {
 public:
  explicit DirectoryListings(FileManager& files) : files_(files) {}

  const Result<std::vector<std::string>>& of(const std::string& path) {
    const auto known = known_.find(path);
    return known != known_.end() ? known->second : known_.emplace(path, files_.list(path)).first->second;
  }
  /// The next question lists `path` anew.
  void forget(const std::string& path) { known_.erase(path); }

 private:
  FileManager& files_;
  std::map<std::string, Result<std::vector<std::string>>> known_;
};

}  // namespace vorlu
