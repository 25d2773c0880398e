#pragma once

#include <mutex>
#include <vector>

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/keychain.h"

namespace vorlu {

/// One JSON file that only its owner can read. A file that can't be read or understood fails every question; adding an
/// item moves one that can't be understood aside, as ".corrupt", and starts anew.
class LinuxKeychain : public Keychain {
 public:
  static constexpr const char* path = "/Library/Keychains/vorlu.keychain.json";
  static constexpr int duplicateItem = -25299;
  static constexpr int corruptFile = -25294;

  explicit LinuxKeychain(FileManager& files) : files_(files) {}

  Status add(const KeychainItem& item) override;
  Result<std::optional<std::string>> read(const std::string& service, const std::string& account) override;
  /// An item that isn't there counts as removed.
  Status remove(const std::string& service, const std::string& account) override;

 private:
  Result<std::vector<KeychainItem>> load();
  Status store(const std::vector<KeychainItem>& items);

  FileManager& files_;
  std::mutex mutex_;
};

}  // namespace vorlu
