#pragma once

#include <optional>
#include <string>

namespace vorlu {

/// A path taken apart: the folder it lies in and its last component.
struct PathParts {
  std::string folder;
  std::string name;  ///< empty for "/"
};
PathParts splitPath(std::string path);

/// The folder that is "/" to the agent: the machine's own root in the program, a temporary folder in tests.
class RootFolder {
 public:
  explicit RootFolder(std::string folder = "/");

  /// The machine's path of one of the agent's absolute paths. Every path goes through here and nowhere else.
  std::string hostPath(const std::string& path) const { return folder_ + path; }
  /// The way back; nothing for a path outside the root.
  std::optional<std::string> agentPath(const std::string& hostPath) const;

 private:
  std::string folder_;  ///< without a slash at its end, so empty for "/"
};

}  // namespace vorlu
