#pragma once

#include <filesystem>
#include <string>

namespace vorlu::test {

/// A fresh folder of the machine, removed at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::string& path() const { return path_; }
  /// The machine's path of an absolute path below this folder.
  std::string operator/(const std::string& agentPath) const { return path_ + agentPath; }

 private:
  std::string path_;
};

/// Makes the file (and its parents) with this text.
void writeFile(const std::string& hostPath, const std::string& text);
/// The file's text; empty without one.
std::string readFile(const std::string& hostPath);

}  // namespace vorlu::test
