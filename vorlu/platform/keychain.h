#pragma once

#include <optional>
#include <string>

#include "vorlu/platform/result.h"

namespace vorlu {

/// A generic password of the system keychain; always accessible on this device only when unlocked.
struct KeychainItem {
  std::string service;
  std::string account;
  std::string value;
  std::string applicationTag;
  bool invisible = false;
};

/// Stands for SecItemAdd, SecItemCopyMatching and SecItemDelete.
class Keychain {
 public:
  virtual ~Keychain() = default;

  /// Fails when an item of the same service and account exists.
  virtual Status add(const KeychainItem& item) = 0;
  /// Nothing inside a success: no such item.
  virtual Result<std::optional<std::string>> read(const std::string& service, const std::string& account) = 0;
  virtual Status remove(const std::string& service, const std::string& account) = 0;
};

}  // namespace vorlu
