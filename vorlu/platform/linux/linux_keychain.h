#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/keychain.h"
#include "vorlu/platform/linux/root_folder.h"

namespace vorlu {

/// One JSON file that only its owner can read. A file that can't be read or understood fails every question; adding an
/// item moves one that can't be understood aside, as ".corrupt", and starts anew. Processes that change it take turns.
class LinuxKeychain : public Keychain {
 public:
  static constexpr const char* path = "/Library/Keychains/vorlu.keychain.json";
  static constexpr const char* folder = "/Library/Keychains";
  static constexpr int duplicateItem = -25299;
  static constexpr int corruptFile = -25294;

  /// `root` is the one that `files` works below.
  LinuxKeychain(FileManager& files, const RootFolder& root) : files_(files), hostFolder_(root.hostPath(folder)) {}

  Status add(const KeychainItem& item) override;
  Result<std::optional<std::string>> read(const std::string& service, const std::string& account) override;
  /// An item that isn't there counts as removed.
  Status remove(const std::string& service, const std::string& account) override;

 private:
  Result<std::vector<KeychainItem>> load();
  Status store(const std::vector<KeychainItem>& items);

  FileManager& files_;
  const std::string hostFolder_;
  std::mutex mutex_;
};

}  // namespace vorlu
